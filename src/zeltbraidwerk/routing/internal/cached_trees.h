#pragma once

#include <vector>

#include "zeltbraidwerk/graphs/internal/steiner_tree.h"
#include "zeltbraidwerk/graphs/internal/tree_routines.h"

namespace zelt::braidwerk::internal {

/// The Steiner trees of a device by Graph::steiner_tree, for calls whose graph outlives them: each
/// tree asked for stays in the graph's cache, where later calls find it, by whichever builder it
/// was made. A search over these trees leaves out no rotation and no plan, since the trees that it
/// asks for are part of its result.
class CachedTrees {
 public:
  static constexpr bool may_skip = false;

  /// The graph must outlive this.
  explicit CachedTrees(structures::Graph& graph) : graph_(graph) {}

  int size() const { return graph_.n; }

  SteinerTree tree(std::vector<int> terminals) {
    const structures::Graph& tree = cached_tree(graph_, terminals);
    SteinerTree result;
    result.edges = BitGraph(tree);
    result.vertices = VertexSet(tree.n, tree.vertices);
    return result;
  }

  int fan_in_cost(const VertexSet& support, int /*limit*/) {
    std::vector<int> terminals;
    support.for_each([&](int v) { terminals.push_back(v); });
    const int vertices = cached_tree(graph_, terminals).nb_vertices();
    return fan_in_cnots(vertices, static_cast<int>(terminals.size()));
  }

 private:
  structures::Graph& graph_;
};

}  // namespace zelt::braidwerk::internal
