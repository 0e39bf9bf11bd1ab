#include "zeltbraidwerk/linear/internal/row_column.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <tuple>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/graphs/internal/path_tree.h"
#include "zeltbraidwerk/graphs/internal/steiner_tree.h"

namespace zelt::braidwerk::internal {
namespace {

/// The gates G reduce the inverse of the matrix to a permutation, and so are its circuit in time
/// order. With A = G times the inverse and B the transposed inverse of A, CNOT(c, t) adds row c of
/// A to row t and row t of B to row c: clearing row j of A is clearing column j of B, by the same
/// procedure with controls and targets exchanged. Both are held transposed, so that a column is a
/// packed set of wires.
class Clearing {
 public:
  Clearing(const BitMatrix& m, FreeCircuit& found)
      : sides_{inverse(m).transposed(), m}, found_(found) {}

  const BitMatrix& side(int side) const { return sides_[side]; }

  /// Leaves the column a single one, on the wire: sets it along a tree, then clears it from the
  /// leaves. The wire itself is added to others only while its entry is 1.
  void clear(int side, int wire, int column, const BitGraph& edges) {
    std::vector<std::pair<int, int>> walk{{wire, -1}};  // vertex, parent
    for (std::size_t head = 0; head < walk.size(); ++head) {
      const auto [v, parent] = walk[head];
      edges.for_each_neighbour(v, [&, v = v, parent = parent](int w) {
        if (w != parent) walk.emplace_back(w, v);
      });
    }
    std::reverse(walk.begin(), walk.end());
    for (const auto& [v, parent] : walk) {
      if (parent >= 0 && !sides_[side].get(column, parent)) add(side, v, parent);
    }
    for (const auto& [v, parent] : walk) {
      if (parent >= 0) add(side, parent, v);
    }
  }

 private:
  /// Adds row `from` to row `to` of the side.
  void add(int side, int from, int to) {
    sides_[side].add_col(from, to);
    sides_[1 - side].add_col(to, from);
    const auto [control, target] = side == 0 ? std::pair(from, to) : std::pair(to, from);
    found_.circuit.gates.emplace_back(control, target);
  }

  BitMatrix sides_[2];
  FreeCircuit& found_;
};

class RowColumn {
 public:
  RowColumn(const BitMatrix& m, const BitGraph& graph, const RowColumnOptions& options,
            const Draw& draw, FreeCircuit& found)
      : clearing_(m, found),
        graph_(graph),
        paths_(graph),
        wires_(m.rows()),
        columns_(m.rows()),
        options_(options),
        draw_(draw),
        found_(found) {
    for (int v = 0; v < m.rows(); ++v) {
      wires_.insert(v);
      columns_.insert(v);
    }
  }

  bool run(const Control& control) {
    while (!wires_.empty()) {
      if (control.stop_requested()) return false;
      stop_point();
      const auto [wire, column] = next();
      const int first = draw_(0, 1);
      for (const int side : {first, 1 - first}) {
        clearing_.clear(side, wire, column, tree(side, wire, column).edges);
      }
      found_.perm[static_cast<std::size_t>(column)] = wire;
      wires_.erase(wire);
      columns_.erase(column);
      paths_.disconnect(wire);
    }
    return true;
  }

 private:
  /// The wire that leaves next, and the column that it keeps.
  std::pair<int, int> next() {
    VertexSet candidates = non_cutting(graph_, wires_);
    if (candidates.empty()) candidates = wires_;  // the last one
    std::tuple<int, int, int> best;
    int ties = 0;
    const auto consider = [&](int wire, int column) {
      int cost = 4 * (cost_of(0, wire, column) + cost_of(1, wire, column));
      if (options_.slack > 0) cost += draw_(0, 4 * options_.slack);
      if (ties > 0 && cost > std::get<0>(best)) return;
      if (ties > 0 && cost == std::get<0>(best)) {
        if (draw_(0, ties++) != 0) return;
      } else {
        ties = 1;
      }
      best = {cost, wire, column};
    };
    const std::vector<int> columns = options_.free ? lightest_columns() : std::vector<int>();
    candidates.for_each([&](int wire) {
      stop_point();
      if (!options_.free) consider(wire, wire);
      for (const int column : columns) consider(wire, column);
    });
    return {std::get<1>(best), std::get<2>(best)};
  }

  /// A few columns with the fewest ones on both sides.
  std::vector<int> lightest_columns() const {
    constexpr std::size_t most = 4;
    std::vector<std::pair<int, int>> keyed;
    columns_.for_each([&](int c) {
      keyed.emplace_back(clearing_.side(0).row_weight(c) + clearing_.side(1).row_weight(c), c);
    });
    std::sort(keyed.begin(), keyed.end());
    std::vector<int> lightest;
    for (std::size_t k = 0; k < std::min(most, keyed.size()); ++k) {
      lightest.push_back(keyed[k].second);
    }
    return lightest;
  }

  SteinerTree tree(int side, int wire, int column) {
    terminals_.assign(1, wire);
    const BitMatrix& ones = clearing_.side(side);
    for_each_bit(ones.row(column), ones.stride(), [&](int v) {
      if (v != wire) terminals_.push_back(v);
    });
    return grow_steiner_tree(paths_, terminals_);
  }

  /// CNOTs of clear, as things stand.
  int cost_of(int side, int wire, int column) {
    int cost = -1;
    tree(side, wire, column).vertices.for_each([&](int v) {
      cost += clearing_.side(side).get(column, v) ? 1 : 2;
    });
    return cost;
  }

  Clearing clearing_;
  const BitGraph& graph_;
  ShrinkingPaths paths_;
  VertexSet wires_;
  VertexSet columns_;
  const RowColumnOptions& options_;
  const Draw& draw_;
  FreeCircuit& found_;
  std::vector<int> terminals_;
};

/// The branches of a rooted tree between some of its vertices.
BitGraph branches_between(const PathTree& tree, int root, const VertexSet& vertices) {
  BitGraph branches(vertices.size());
  VertexSet reached(vertices.size());
  vertices.for_each([&](int v) {
    for (; v != root && !reached.contains(v); v = tree.parent_of(v)) {
      reached.insert(v);
      branches.join(v, tree.parent_of(v));
    }
  });
  for (int top = root; branches.is_leaf(top) && !vertices.contains(top);) {
    const int below = branches.first_neighbour_in(top, reached);
    branches.part(top, below);
    top = below;
  }
  return branches;
}

}  // namespace

FreeCircuit cleared_along_tree(const BitMatrix& m, const BitGraph& graph) {
  const int n = m.rows();
  FreeCircuit found(n);
  if (n == 0) return found;
  Clearing clearing(m, found);
  PathTree tree;
  search_tree(graph, 0, tree);
  std::vector<int> leaving(static_cast<std::size_t>(n));
  std::iota(leaving.begin(), leaving.end(), 0);
  std::ranges::stable_sort(leaving, std::greater(), [&](int v) { return tree.length(v); });
  for (const int v : leaving) {
    question_point();
    for (const int side : {0, 1}) {
      VertexSet ones(n);
      std::copy_n(clearing.side(side).row(v), ones.count(), ones.words());
      ones.insert(v);
      clearing.clear(side, v, v, branches_between(tree, 0, ones));
    }
  }
  return found;
}

bool row_column_synthesis(const BitMatrix& m, const BitGraph& graph,
                          const RowColumnOptions& options, const Draw& draw, const Control& control,
                          FreeCircuit& found) {
  return RowColumn(m, graph, options, draw, found).run(control);
}

}  // namespace zelt::braidwerk::internal
