#pragma once

#include <vector>

#include "zeltbraidwerk/graphs/internal/bit_graph.h"

namespace zelt::braidwerk::internal {

/// The shortest paths between one root and every vertex.
struct PathTree {
  std::vector<int> parent;    ///< the next vertex toward the root; -1 at the root and out of reach
  std::vector<int> distance;  ///< hops to the root; -1 out of reach

  int parent_of(int v) const { return parent[static_cast<std::size_t>(v)]; }
  /// Vertices of the path, both ends included; 0 out of reach.
  int length(int v) const { return distance[static_cast<std::size_t>(v)] + 1; }

  void clear(int n) {
    parent.assign(static_cast<std::size_t>(n), -1);
    distance.assign(static_cast<std::size_t>(n), -1);
  }
};

/// Breadth-first search that takes neighbours in descending order.
void search_tree(const BitGraph& graph, int root, PathTree& tree);

/// The tree of repeated sweeps: for v ascending and its neighbours w ascending, v takes w as its
/// parent when that brings it strictly nearer to the root.
void sweep_tree(const BitGraph& graph, int root, PathTree& tree);

/// The path table of a graph whose vertices drop out one after the other, each tree computed when
/// it is first looked at. While the graph is whole, paths are branches of search_tree at their
/// source; afterwards, of sweep_tree at their target.
class ShrinkingPaths {
 public:
  explicit ShrinkingPaths(BitGraph graph);

  int size() const { return graph_.size(); }
  void disconnect(int v);

  int length(int from, int to) { return tree(from).length(to); }

  /// Calls f for the vertices of the path, from one end to the other; for none out of reach.
  template <class F>
  void walk(int from, int to, F&& f) {
    const int root = whole_ ? from : to;
    const PathTree& branches = tree(root);
    int v = whole_ ? to : from;
    if (branches.length(v) == 0) return;
    for (; v >= 0; v = branches.parent_of(v)) f(v);
  }

 private:
  const PathTree& tree(int root);

  BitGraph graph_;
  bool whole_ = true;
  std::vector<PathTree> trees_;
  std::vector<bool> known_;
};

}  // namespace zelt::braidwerk::internal
