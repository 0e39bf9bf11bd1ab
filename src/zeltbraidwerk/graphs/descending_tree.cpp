#include "zeltbraidwerk/graphs/descending_tree.h"

#include "zeltbraidwerk/graphs/internal/descending_tree.h"

namespace structures {

namespace internal = zelt::braidwerk::internal;
using internal::BitGraph;

void prune_leaves(Graph& tree, std::vector<int>& keep) {
  BitGraph edges(tree);
  internal::prune_leaves(edges, internal::VertexSet(tree.n, keep));
  edges.unpack_into(tree);
}

Graph shortcut_ham_path(const Graph& graph, std::vector<int>& path, std::vector<int>& targets,
                        int root) {
  Graph tree(graph.n);
  internal::shortcut_ham_path(BitGraph(graph), path, internal::path_positions(path, graph.n),
                              targets, root)
      .unpack_into(tree);
  return tree;
}

bool check_is_descending(const Graph& tree, std::vector<int>& path, int root) {
  return internal::is_descending(BitGraph(tree), internal::path_positions(path, tree.n), root);
}

}  // namespace structures
