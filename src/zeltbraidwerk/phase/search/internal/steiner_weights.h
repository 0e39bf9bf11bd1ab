#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"

namespace zelt::braidwerk::internal {

/// How many CNOTs on the edges of a connected graph bring the sum of a set of vertices to one of
/// them, and one more: an edge each of a tree that joins them, and one more for each vertex of the
/// tree that is not in the set. A set of more than one vertex always has a neighbour in it or
/// beside it whose change lowers the weight by one.
///
/// Exact up to 20 vertices, from a table of 2^n bytes. Beyond that the better of two spanning
/// trees.
class SteinerWeights {
 public:
  static constexpr int most_vertices = 256;

  explicit SteinerWeights(const BitGraph& graph);

  /// No set weighs more.
  int most() const { return 2 * n_; }

  int weight(const Word* set);

  /// Calls f(v, weight) for the vertices v with a neighbour in the set, with the weight of the set
  /// when v has entered or left it. Returns the weight of the set as it is, 1 at least.
  template <class F>
  int for_each_change(const Word* set, F&& f) {
    find_neighbours(set);
    if (!by_set_.empty()) {
      for_each_bit(neighbours_.data(), 1, [&](int v) { f(v, by_set_[*set ^ Word{1} << v]); });
      return by_set_[*set];
    }
    const int own = walk_trees(set);
    for_each_bit(neighbours_.data(), stride_, [&](int v) { f(v, changed_weight(set, v)); });
    return own;
  }

 private:
  /// A spanning tree. Its distances between members of a set, around in the order of a depth-first
  /// walk, add up to twice the edges that join them.
  struct Tree {
    std::vector<int> order;  // vertices
    std::vector<std::size_t> place;
    std::vector<std::uint16_t> distance;  // by two places

    // Of the set at hand.
    std::vector<std::size_t> before;  // the place of the next member on either side, by place
    std::vector<std::size_t> after;
    int tour = 0;

    int between(std::size_t a, std::size_t b) const { return distance[a * order.size() + b]; }
  };

  void fill_table(const BitGraph& graph);
  void grow_tree(const BitGraph& graph, bool ascending);
  int walk_trees(const Word* set);
  void walk_tree(const Word* set, Tree& tree);
  int changed_weight(const Word* set, int v) const;
  void find_neighbours(const Word* set);

  int n_;
  int stride_;
  const BitGraph* graph_;
  std::vector<std::uint8_t> by_set_;
  std::vector<Tree> trees_;
  int members_ = 0;               // of the set at hand
  std::vector<Word> neighbours_;  // of the set at hand
};

}  // namespace zelt::braidwerk::internal
