#pragma once

#include <vector>

#include "zeltbraidwerk/graphs/internal/steiner_tree.h"

namespace zelt::braidwerk::internal {

/// The Steiner trees of a device, as Graph::steiner_tree builds them, without a graph for each and
/// without the graph's cache: a search looks at many more of them than it takes.
class DeviceTrees {
 public:
  static constexpr bool may_skip = true;

  /// Reads graph.sketch_mode and graph.shortest_paths, and draws graph.sketches where a tree needs
  /// them. The graph must outlive this. Throws std::out_of_range where the path table is missing.
  explicit DeviceTrees(structures::Graph& graph);

  int size() const { return graph_.n; }
  SteinerTree tree(const std::vector<int>& terminals);

  /// The CNOTs of a fan-in on the tree of a support: one a vertex that is no terminal, and one an
  /// edge. When they are more than `limit`, any number above it.
  int fan_in_cost(const VertexSet& support, int limit);

 private:
  void enter(int v);
  void take_in_beside();
  void attach_nearest();

  structures::Graph& graph_;
  std::vector<int> lengths_;  ///< of the paths, in vertices
  bool grows_by_words_;
  BitGraph neighbours_;  ///< pairs joined by a path of two vertices

  // A tree that is growing, its vertices alone.
  VertexSet tree_;
  VertexSet left_;    ///< terminals not in it
  VertexSet border_;  ///< all neighbours of its vertices
  int vertices_ = 0;
};

}  // namespace zelt::braidwerk::internal
