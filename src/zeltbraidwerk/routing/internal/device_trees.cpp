#include "zeltbraidwerk/routing/internal/device_trees.h"

#include <algorithm>
#include <bit>
#include <stdexcept>

#include "zeltbraidwerk/graphs/internal/tree_routines.h"

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

}  // namespace

DeviceTrees::DeviceTrees(structures::Graph& graph) : graph_(graph), neighbours_(graph.n) {
  if (graph.shortest_paths.size() != at(graph.n)) {
    throw std::out_of_range("The table of shortest paths is not filled");
  }
  for (const auto& row : graph.shortest_paths) {
    for (const auto& path : row) {
      lengths_.push_back(static_cast<int>(path.size()));
      if (path.size() == 2) neighbours_.join(path.front(), path.back());
    }
  }
  const bool is_connected = std::find(lengths_.begin(), lengths_.end(), 0) == lengths_.end();
  grows_by_words_ = graph.sketch_mode == 0 && is_connected;
}

SteinerTree DeviceTrees::tree(const std::vector<int>& terminals) {
  const MeasuredPaths paths{graph_, lengths_};
  if (graph_.sketch_mode == 0) return grow_steiner_tree(paths, terminals);
  if (graph_.sketches.empty()) graph_.initialize_sketches();
  return join_at_seed(paths, graph_.sketches, terminals).value_or(SteinerTree());
}

/// grow_steiner_tree without its edges. Terminals beside the tree come first in any order: they
/// add no vertex but themselves, and which vertices join it afterwards depends on its vertices
/// alone.
int DeviceTrees::fan_in_cost(const VertexSet& support, int limit) {
  const int terminals = support.members();
  if (terminals == 0 || !grows_by_words_) {
    std::vector<int> list;
    support.for_each([&](int v) { list.push_back(v); });
    return fan_in_cnots(tree(list).vertices.members(), terminals);
  }
  left_ = support;
  tree_ = border_ = VertexSet(size());
  vertices_ = 0;
  enter(support.first());
  take_in_beside();
  const auto at_least = [&] { return fan_in_cnots(vertices_ + left_.members(), terminals); };
  while (!left_.empty() && at_least() <= limit) {
    attach_nearest();
    take_in_beside();
  }
  return at_least();
}

void DeviceTrees::enter(int v) {
  if (tree_.contains(v)) return;
  tree_.insert(v);
  left_.erase(v);
  for (int w = 0; w < border_.count(); ++w) border_.words()[w] |= neighbours_.row(v)[w];
  ++vertices_;
}

void DeviceTrees::take_in_beside() {
  bool any = true;
  while (any) {
    any = false;
    for_each_bit_of_both(border_.words(), left_.words(), border_.count(), [&](int v) {
      enter(v);
      any = true;
    });
  }
}

/// The nearest terminal, of equal ones the smallest, along the path from the smallest tree vertex
/// at that distance. None is beside the tree.
void DeviceTrees::attach_nearest() {
  VertexSet reached = border_;
  int length = 2;
  int terminal = -1;
  while (terminal < 0) {
    VertexSet next = reached;
    reached.for_each([&](int v) {
      for (int w = 0; w < next.count(); ++w) next.words()[w] |= neighbours_.row(v)[w];
    });
    reached = std::move(next);
    ++length;
    for (int w = 0; w < left_.count() && terminal < 0; ++w) {
      if (const Word hit = reached.words()[w] & left_.words()[w]) {
        terminal = w * word_bits + std::countr_zero(hit);
      }
    }
  }
  int nearest = -1;
  const int* lengths = lengths_.data() + at(terminal) * at(size());
  tree_.for_each([&](int v) {
    if (nearest < 0 && lengths[v] == length) nearest = v;
  });
  for (const int v : graph_.shortest_paths[at(nearest)][at(terminal)]) enter(v);
}

}  // namespace zelt::braidwerk::internal
