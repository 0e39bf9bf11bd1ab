#include "zeltbraidwerk/graphs/shortest_paths.h"

#include <lemon/list_graph.h>

#include <algorithm>

#include "zeltbraidwerk/graphs/internal/path_tree.h"

namespace structures {

using zelt::braidwerk::internal::BitGraph;
using zelt::braidwerk::internal::PathTree;

namespace {

/// The walk from v to the root; empty when there is none.
std::vector<int> walk_to_root(const PathTree& tree, int v) {
  std::vector<int> path(static_cast<std::size_t>(tree.length(v)));
  for (int& place : path) {
    place = v;
    v = tree.parent_of(v);
  }
  return path;
}

}  // namespace

std::map<int, int> build_graph(const Graph& g, lemon::ListDigraph& d) {
  std::map<int, int> ids;
  for (int i = 0; i < g.n; ++i) ids[i] = lemon::ListDigraph::id(d.addNode());
  const auto node = [&](int i) { return lemon::ListDigraph::nodeFromId(ids[i]); };
  for (const auto& [i, j] : g.edges()) {
    d.addArc(node(j), node(i));
    d.addArc(node(i), node(j));
  }
  return ids;
}

void compute_all_shortest_paths_lemon(Graph& g, std::vector<std::vector<std::vector<int>>>& paths) {
  const BitGraph edges(g);
  PathTree tree;
  paths.resize(static_cast<std::size_t>(edges.size()));
  for (int i = 0; i < edges.size(); ++i) {
    std::vector<std::vector<int>>& row = paths[static_cast<std::size_t>(i)];
    row.resize(static_cast<std::size_t>(edges.size()));
    search_tree(edges, i, tree);
    for (int j = 0; j < edges.size(); ++j) {
      std::vector<int>& path = row[static_cast<std::size_t>(j)];
      path = walk_to_root(tree, j);
      std::reverse(path.begin(), path.end());
    }
  }
}

std::vector<int> Graph::shortest_path(int source, int target) const {
  const BitGraph edges(*this);
  if (!edges.contains(source) || !edges.contains(target)) return {};
  PathTree tree;
  sweep_tree(edges, target, tree);
  return walk_to_root(tree, source);
}

void Graph::set_shortest_paths() {
  compute_all_shortest_paths_lemon(*this, shortest_paths);
}

void Graph::update_shortest_paths() {
  if (shortest_paths.size() != static_cast<std::size_t>(n)) {
    set_shortest_paths();
    return;
  }
  const BitGraph edges(*this);
  PathTree tree;
  for (int j = 0; j < n; ++j) {
    sweep_tree(edges, j, tree);
    for (int i = 0; i < n; ++i) {
      shortest_paths[static_cast<std::size_t>(i)].at(static_cast<std::size_t>(j)) =
          walk_to_root(tree, i);
    }
  }
}

}  // namespace structures
