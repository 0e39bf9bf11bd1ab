#include "zeltbraidwerk/pauli/internal/colouring.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <utility>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/pauli/commuting.h"

namespace zelt::braidwerk::internal {

Colouring colour_in_order(const std::vector<int>& order, const Neighbours& neighbours) {
  const auto words = static_cast<std::size_t>(words_for(static_cast<int>(order.size())));
  std::vector<Word> row(words);
  std::vector<Word> coloured(words);
  std::vector<int> colour_of(order.size());
  std::vector<int> taken_for;  // by colour: the last vertex that found it taken
  for (const int u : order) {
    neighbours(u, row.data());
    stop_point();
    for (std::size_t w = 0; w < words; ++w) {
      for (Word rest = row[w] & coloured[w]; rest != 0; rest &= rest - 1) {
        const std::size_t v = w * word_bits + static_cast<std::size_t>(std::countr_zero(rest));
        taken_for[static_cast<std::size_t>(colour_of[v])] = u;
      }
    }
    const auto free =
        std::find_if(taken_for.begin(), taken_for.end(), [u](int vertex) { return vertex != u; });
    const auto vertex = static_cast<std::size_t>(u);
    colour_of[vertex] = static_cast<int>(free - taken_for.begin());
    coloured[vertex / word_bits] |= Word{1} << (vertex % word_bits);
    if (free == taken_for.end()) taken_for.push_back(-1);
  }
  Colouring classes(taken_for.size());
  for (std::size_t v = 0; v < colour_of.size(); ++v) {
    classes[static_cast<std::size_t>(colour_of[v])].push_back(static_cast<int>(v));
  }
  return classes;
}

Colouring colour_by_degree(int n, const Neighbours& neighbours) {
  std::vector<Word> row(static_cast<std::size_t>(words_for(n)));
  std::vector<std::pair<int, int>> degrees;
  for (int u = 0; u < n; ++u) {
    neighbours(u, row.data());
    const int word = u / word_bits;
    const Word rest = row[static_cast<std::size_t>(word)] & low_bits(u % word_bits);
    degrees.emplace_back(u, weight(row.data(), word) + std::popcount(rest));
  }
  std::stable_sort(degrees.begin(), degrees.end(), cmp_degrees);
  std::vector<int> order;
  for (const auto& [u, degree] : degrees) order.push_back(u);
  return colour_in_order(order, neighbours);
}

Colouring colour_by_degree_left(const BitMatrix& graph) {
  const int n = graph.rows();
  std::vector<int> degrees;
  for (int u = 0; u < n; ++u) degrees.push_back(graph.row_weight(u));
  std::vector<int> left(static_cast<std::size_t>(n));
  std::iota(left.begin(), left.end(), 0);
  std::vector<int> order;
  while (!left.empty()) {
    const auto best = std::max_element(left.begin(), left.end(), [&](int a, int b) {
      return degrees[static_cast<std::size_t>(a)] < degrees[static_cast<std::size_t>(b)];
    });
    const int u = *best;
    order.push_back(u);
    left.erase(best);
    for (const int v : left) degrees[static_cast<std::size_t>(v)] -= graph.get(v, u);
  }
  return colour_in_order(order,
                         [&](int u, Word* row) { std::copy_n(graph.row(u), graph.stride(), row); });
}

Colouring commuting_groups(const PauliFrame& frame) {
  return colour_by_degree(frame.rows(),
                          [&](int r, Word* row) { frame.anticommuting_rows(frame, r, row); });
}

}  // namespace zelt::braidwerk::internal
