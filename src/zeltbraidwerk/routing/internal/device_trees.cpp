#include "zeltbraidwerk/routing/internal/device_trees.h"

namespace zelt::braidwerk::internal {
namespace {

std::size_t at(int i) {
  return static_cast<std::size_t>(i);
}

/// The builders' view of the device's shortest paths.
struct MeasuredPaths {
  const structures::Graph& graph;
  const std::vector<int>& lengths;

  int size() const { return graph.n; }
  int length(int from, int to) const { return lengths[at(from) * at(graph.n) + at(to)]; }
  template <class F>
  void walk(int from, int to, F&& f) const {
    for (const int v : graph.shortest_paths[at(from)][at(to)]) f(v);
  }
};

SteinerTree unpack(const structures::Graph& tree) {
  SteinerTree result;
  result.edges = BitGraph(tree);
  result.vertices = VertexSet(tree.n, tree.vertices);
  return result;
}

}  // namespace

DeviceTrees::DeviceTrees(structures::Graph& graph) : graph_(graph) {
  if (graph.shortest_paths.size() != at(graph.n)) return;
  for (const auto& row : graph.shortest_paths) {
    for (const auto& path : row) lengths_.push_back(static_cast<int>(path.size()));
  }
}

SteinerTree DeviceTrees::tree(const std::vector<int>& terminals) {
  if (const auto known = graph_.steiner_cache.find(terminals);
      known != graph_.steiner_cache.end()) {
    return unpack(known->second);
  }
  if (lengths_.size() != at(graph_.n) * at(graph_.n)) {  // the graph says what is wrong
    std::vector<int> list = terminals;
    return unpack(graph_.steiner_tree(list));
  }
  const MeasuredPaths paths{graph_, lengths_};
  if (graph_.sketch_mode == 0) return grow_steiner_tree(paths, terminals);
  if (graph_.sketches.empty()) graph_.initialize_sketches();
  return join_at_seed(paths, graph_.sketches, terminals).value_or(SteinerTree());
}

void DeviceTrees::keep(std::vector<int> terminals) {
  graph_.steiner_tree(terminals);
}

}  // namespace zelt::braidwerk::internal
