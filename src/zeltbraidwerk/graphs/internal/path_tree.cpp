#include "zeltbraidwerk/graphs/internal/path_tree.h"

#include <utility>

namespace zelt::braidwerk::internal {

void search_tree(const BitGraph& graph, int root, PathTree& tree) {
  tree.clear(graph.size());
  tree.distance[static_cast<std::size_t>(root)] = 0;
  VertexSet met(graph.size());
  met.insert(root);
  std::vector<int> queue{root};
  queue.reserve(static_cast<std::size_t>(graph.size()));
  for (std::size_t head = 0; head < queue.size(); ++head) {
    const int v = queue[head];
    for (int w = graph.words() - 1; w >= 0; --w) {
      Word open = graph.row(v)[w] & ~met.words()[w];
      met.words()[w] |= open;
      while (open != 0) {
        const int bit = word_bits - 1 - std::countl_zero(open);
        open ^= Word{1} << bit;
        const int child = w * word_bits + bit;
        tree.parent[static_cast<std::size_t>(child)] = v;
        tree.distance[static_cast<std::size_t>(child)] =
            tree.distance[static_cast<std::size_t>(v)] + 1;
        queue.push_back(child);
      }
    }
  }
}

// In a sweep over ascending vertices, v settles as soon as a neighbour one hop nearer has settled:
// in the same sweep when that neighbour comes before v, in the next one when it comes after. Of
// the neighbours that have settled by then it takes the smallest. So one pass outward over the
// layers, carrying the number of the sweep in which a vertex settles, gives the same tree.
void sweep_tree(const BitGraph& graph, int root, PathTree& tree) {
  const int n = graph.size();
  tree.clear(n);
  std::vector<int> settled(static_cast<std::size_t>(n));
  VertexSet unmet(n);
  for (int v = 0; v < n; ++v) unmet.insert(v);
  VertexSet layer(n);
  std::vector<int> current;
  std::vector<int> next{root};
  unmet.erase(root);
  for (int distance = 0; !next.empty(); ++distance) {
    for (const int v : next) {
      int parent = -1;
      int sweep = 0;
      for_each_bit_of_both(graph.row(v), layer.words(), graph.words(), [&](int u) {
        const int arrival = settled[static_cast<std::size_t>(u)] + (u > v ? 1 : 0);
        if (parent >= 0 && arrival >= sweep) return;
        parent = u;
        sweep = arrival;
      });
      tree.parent[static_cast<std::size_t>(v)] = parent;
      tree.distance[static_cast<std::size_t>(v)] = distance;
      settled[static_cast<std::size_t>(v)] =
          distance == 1 ? 1 : sweep;  // the root is there at once
    }
    for (const int v : current) layer.erase(v);
    for (const int v : next) layer.insert(v);
    current.swap(next);
    next.clear();
    for (const int v : current) graph.meet_neighbours(v, unmet, next);
  }
}

ShrinkingPaths::ShrinkingPaths(BitGraph graph)
    : graph_(std::move(graph)),
      trees_(static_cast<std::size_t>(graph_.size())),
      known_(trees_.size()) {}

void ShrinkingPaths::disconnect(int v) {
  graph_.isolate(v);
  whole_ = false;
  known_.assign(known_.size(), false);
}

const PathTree& ShrinkingPaths::tree(int root) {
  const auto place = static_cast<std::size_t>(root);
  if (!known_[place]) {
    known_[place] = true;
    if (whole_) {
      search_tree(graph_, root, trees_[place]);
    } else {
      sweep_tree(graph_, root, trees_[place]);
    }
  }
  return trees_[place];
}

}  // namespace zelt::braidwerk::internal
