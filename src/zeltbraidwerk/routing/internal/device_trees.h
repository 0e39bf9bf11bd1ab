#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/graphs/internal/steiner_tree.h"

namespace zelt::braidwerk::internal {

/// The Steiner trees of a device, as Graph::steiner_tree gives them, without a graph for each: a
/// search looks at many more of them than it takes. A tree that the graph's cache held at the
/// outset is taken from there; only keep() adds to the cache.
class ZELTBRAIDWERK_KERNEL_EXPORT DeviceTrees {
 public:
  /// Reads graph.sketch_mode and graph.shortest_paths. The graph must outlive this.
  explicit DeviceTrees(structures::Graph& graph);

  int size() const { return graph_.n; }
  SteinerTree tree(const std::vector<int>& terminals);
  void keep(std::vector<int> terminals);

  /// The CNOTs of a fan-in on the tree of a support: one a vertex that is no terminal, and one an
  /// edge. When they are more than `limit`, any number above it.
  int fan_in_cost(const VertexSet& support, int limit);

 private:
  bool grows_by_words() const;
  void enter(int v);
  void take_in_beside();
  void attach_nearest();

  structures::Graph& graph_;
  bool had_cache_;
  std::vector<int> lengths_;  ///< of the paths, in vertices; empty when the table is not filled
  bool is_connected_ = false;
  BitGraph neighbours_;  ///< pairs joined by a path of two vertices

  // A tree that is growing, its vertices alone.
  VertexSet tree_;
  VertexSet left_;    ///< terminals not in it
  VertexSet border_;  ///< all neighbours of its vertices
  int vertices_ = 0;
};

}  // namespace zelt::braidwerk::internal
