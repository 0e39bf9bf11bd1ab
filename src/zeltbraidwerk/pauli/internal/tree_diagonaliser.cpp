#include "zeltbraidwerk/pauli/internal/tree_diagonaliser.h"

#include <algorithm>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/graphs/routines.h"
#include "zeltbraidwerk/pauli/internal/table_frame.h"

namespace zelt::braidwerk::internal {
namespace {

/// A breadth-first tree of the graph, or one a component. Cutting off the last vertices of `order`
/// leaves a tree.
struct SpanningTree {
  std::vector<int> order;
  std::vector<int> parent;

  explicit SpanningTree(const structures::Graph& graph)
      : parent(static_cast<std::size_t>(graph.n), -1) {
    std::vector<bool> seen(parent.size());
    for (int start = 0; start < graph.n; ++start) {
      if (seen[static_cast<std::size_t>(start)]) continue;
      seen[static_cast<std::size_t>(start)] = true;
      const std::size_t first = order.size();
      order.push_back(start);
      for (std::size_t k = first; k < order.size(); ++k) {
        for (const int w : graph.neighbors(order[k])) {
          if (seen[static_cast<std::size_t>(w)]) continue;
          seen[static_cast<std::size_t>(w)] = true;
          parent[static_cast<std::size_t>(w)] = order[k];
          order.push_back(w);
        }
      }
    }
  }

  /// The part of the tree that joins the vertices.
  structures::Graph joining(const std::vector<int>& vertices) const {
    structures::Graph tree(static_cast<int>(parent.size()));
    std::vector<bool> inside(parent.size());
    for (const int v : vertices) inside[static_cast<std::size_t>(v)] = true;
    std::size_t pieces = vertices.size();
    for (auto v = order.rbegin(); v != order.rend() && pieces > 1; ++v) {
      const int up = parent[static_cast<std::size_t>(*v)];
      if (!inside[static_cast<std::size_t>(*v)] || up < 0) continue;
      tree.add_edge(*v, up);
      if (inside[static_cast<std::size_t>(up)]) --pieces;
      inside[static_cast<std::size_t>(up)] = true;
    }
    return tree;
  }
};

/// The smallest support, on the qubits, of the rows with a letter on the root; of equal ones that
/// of the first row.
int lightest_row_on(const PauliFrame& frame, int root, std::span<const int> qubits) {
  int lightest = -1;
  std::size_t least = qubits.size() + 1;
  for (int r = 0; r < frame.rows(); ++r) {
    if (frame.letter(r, root) == 0) continue;
    const std::size_t size = support_on(frame, r, qubits).size();
    if (size < least) lightest = r;
    least = std::min(least, size);
  }
  return lightest;
}

}  // namespace

int single_letter(const PauliFrame& frame, int q) {
  bool has_x = false, has_y = false, has_z = false;
  const Word* x = frame.x(q);
  const Word* z = frame.z(q);
  for (int w = 0; w < frame.words(); ++w) {
    has_x |= (x[w] & ~z[w]) != 0;
    has_y |= (x[w] & z[w]) != 0;
    has_z |= (z[w] & ~x[w]) != 0;
  }
  if (has_x + has_y + has_z > 1) return -1;
  return has_x ? 1 : has_y ? 2 : has_z ? 3 : 0;
}

std::vector<int> support_on(const PauliFrame& frame, int row, std::span<const int> qubits) {
  std::vector<int> support;
  std::copy_if(qubits.begin(), qubits.end(), std::back_inserter(support),
               [&](int q) { return frame.letter(row, q) != 0; });
  return support;
}

void diagonalise_on_tree(PauliFrame& frame, const structures::Graph& graph,
                         std::vector<structures::Gate>& circuit) {
  const SpanningTree spanning(graph);
  for (std::span<const int> left = spanning.order; !left.empty();
       left = left.first(left.size() - 1)) {
    stop_point();
    const int leaf = left.back();
    if (single_letter(frame, leaf) < 0) {
      const int row = lightest_row_on(frame, leaf, left);
      const std::vector<int> support = support_on(frame, row, left);
      for (const int q : support) bring_to_z(frame, q, frame.letter(row, q), circuit);
      const structures::Graph tree = spanning.joining(support);
      for (const structures::Gate& gate : routines::fan_in_on_tree(tree, support, leaf)) {
        apply_cnot(frame, gate.qbits[0], gate.qbits[1], circuit);
      }
    } else {
      bring_to_z(frame, leaf, single_letter(frame, leaf), circuit);
    }
  }
}

}  // namespace zelt::braidwerk::internal
