#include "zeltbraidwerk/linear/search/internal/column_reduction.h"

#include <algorithm>

#include "zeltbraidwerk/linear/search/internal/tuning.h"

namespace zelt::braidwerk::internal {

LightRows ColumnLines::light_rows() const {
  constexpr int finished_weight = 2;  // a one in M, a one in N
  return {2 * n_, column_ratio(n_), finished_weight};
}

std::uint64_t ColumnLines::hash_of(const Word* line) const {
  std::uint64_t hash = 0;
  for (int w = 0; w < 2 * words_; ++w) hash = Rng::mixed(hash + line[w] + 0x9e3779b97f4a7c15U);
  return hash;
}

ColumnLines::Entries ColumnLines::entries_of(int column, const Word* line,
                                             const LightRows& light) const {
  unsigned of_m = 0;
  unsigned in_n = 0;
  for (std::size_t t = 0; t < light.chosen().size(); ++t) {
    of_m |= bit(line, light.chosen()[t]) << t;
    in_n |= bit(of_n(line), light.chosen()[t]) << t;
  }
  return {static_cast<std::uint16_t>(column), static_cast<std::uint8_t>(of_m),
          static_cast<std::uint8_t>(in_n)};
}

ColumnReduction::State ColumnReduction::start(const BitMatrix& m) const {
  const int n = lines().size();
  const BitMatrix of_m = m.transposed();
  const BitMatrix of_n = inverse(m);
  std::vector<Word> words;
  words.reserve(static_cast<std::size_t>(n * lines().words()));
  for (int c = 0; c < n; ++c) {
    for (const BitMatrix* columns : {&of_m, &of_n}) {
      words.insert(words.end(), columns->row(c), columns->row(c) + lines().words() / 2);
    }
  }
  return LineReduction::start(std::move(words));
}

GateList ColumnReduction::circuit(const State& reduced, const std::vector<Move>& moves) const {
  GateList list(lines().size(), {});
  for (const Move& move : moves) list.gates.push_back(cnot(move.to, move.from));
  for (int column = 0; column < list.wires(); ++column) {
    for_each_bit(line(reduced, column), lines().words() / 2,
                 [&](int row) { list.frame.put_output(row, column); });
  }
  return list;
}

}  // namespace zelt::braidwerk::internal
