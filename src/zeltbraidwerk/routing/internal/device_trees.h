#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/graphs/internal/steiner_tree.h"

namespace zelt::braidwerk::internal {

/// The Steiner trees of a device, as Graph::steiner_tree gives them, without a graph for each: a
/// search looks at many more of them than it takes. A tree that the graph's cache holds is taken
/// from there; only keep() adds to the cache.
class ZELTBRAIDWERK_KERNEL_EXPORT DeviceTrees {
 public:
  /// Reads graph.sketch_mode and graph.shortest_paths. The graph must outlive this.
  explicit DeviceTrees(structures::Graph& graph);

  int size() const { return graph_.n; }
  SteinerTree tree(const std::vector<int>& terminals);
  void keep(std::vector<int> terminals);

 private:
  structures::Graph& graph_;
  std::vector<int> lengths_;  ///< of the paths, in vertices; empty when the table is not filled
};

/// The CNOTs of a fan-in: one a vertex that is no terminal, and one an edge of the tree.
inline int fan_in_cost(const SteinerTree& tree, const std::vector<int>& terminals) {
  int vertices = 0;
  tree.vertices.for_each([&](int) { ++vertices; });
  return 2 * vertices - static_cast<int>(terminals.size()) - 1;
}

}  // namespace zelt::braidwerk::internal
