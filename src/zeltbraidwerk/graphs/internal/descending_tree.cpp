#include "zeltbraidwerk/graphs/internal/descending_tree.h"

#include <stdexcept>

namespace zelt::braidwerk::internal {

std::vector<int> path_positions(std::span<const int> path, int n) {
  std::vector<int> positions(static_cast<std::size_t>(n), -1);
  for (std::size_t k = path.size(); k-- > 0;) {
    if (path[k] >= 0 && path[k] < n) {
      positions[static_cast<std::size_t>(path[k])] = static_cast<int>(k);
    }
  }
  return positions;
}

void prune_leaves(BitGraph& tree, const VertexSet& keep) {
  for (bool changed = true; changed;) {
    changed = false;
    for (int v = 0; v < tree.size(); ++v) {
      if (!tree.is_leaf(v) || keep.contains(v)) continue;
      tree.isolate(v);
      changed = true;
    }
  }
}

bool is_descending(const BitGraph& tree, std::span<const int> positions, int root) {
  if (!tree.contains(root)) return true;
  struct Step {
    int vertex;
    int parent;
  };
  const auto position = [&](int v) { return positions[static_cast<std::size_t>(v)]; };
  VertexSet visited(tree.size());
  std::vector<Step> stack{{root, -1}};
  bool descending = true;
  while (descending && !stack.empty()) {
    const auto [v, parent] = stack.back();
    stack.pop_back();
    visited.insert(v);
    tree.for_each_neighbour(v, [&](int w) {
      if (w == parent) return;
      if (position(v) < position(w)) descending = false;
      // On a path that visits each vertex once a cycle climbs somewhere; on others the walk ends.
      if (!visited.contains(w)) stack.push_back({w, v});
    });
  }
  return descending;
}

BitGraph shortcut_ham_path(const BitGraph& graph, std::span<const int> path,
                           std::span<const int> positions, std::span<const int> targets, int root) {
  BitGraph tree(graph.size());
  if (targets.size() <= 1) return tree;
  const auto position = [&](int v) {
    return graph.contains(v) ? positions[static_cast<std::size_t>(v)] : -1;
  };
  const int top = position(root);
  const int first = position(targets.front());
  if (first < 0) throw std::out_of_range("Target is not on the path");
  int previous = root;
  for (int k = top - 1; k >= first; --k) {
    const int v = path[static_cast<std::size_t>(k)];
    // All vertices between v and the root hang on the tree already; the previous one is the
    // fallback, a neighbour nearer to the root the better parent.
    int highest = k + 1;
    graph.for_each_neighbour(v, [&](int w) {
      if (position(w) > highest && position(w) <= top) highest = position(w);
    });
    tree.join(v, highest > k + 1 ? path[static_cast<std::size_t>(highest)] : previous);
    previous = v;
  }
  VertexSet keep(graph.size(), targets);
  prune_leaves(tree, keep);
  if (!is_descending(tree, positions, root)) throw std::logic_error("Not a descending tree :/");
  return tree;
}

}  // namespace zelt::braidwerk::internal
