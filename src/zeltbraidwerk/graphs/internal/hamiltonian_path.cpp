#include "zeltbraidwerk/graphs/internal/hamiltonian_path.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace zelt::braidwerk::internal {
namespace {

int common(const Word* a, const VertexSet& b) {
  int count = 0;
  for (int w = 0; w < b.count(); ++w) count += std::popcount(a[w] & b.words()[w]);
  return count;
}

VertexSet everything(int n) {
  VertexSet all(n);
  for (int v = 0; v < n; ++v) all.insert(v);
  return all;
}

/// False where two colours that alternate along every path are too unequal in number.
bool colours_balance(const BitGraph& graph) {
  std::vector<int> colour(static_cast<std::size_t>(graph.size()), -1);
  std::vector<int> queue;
  int difference = 0;
  for (int start = 0; start < graph.size(); ++start) {
    if (colour[static_cast<std::size_t>(start)] >= 0) continue;
    colour[static_cast<std::size_t>(start)] = 0;
    queue.assign(1, start);
    for (std::size_t head = 0; head < queue.size(); ++head) {
      const int mine = colour[static_cast<std::size_t>(queue[head])];
      difference += mine == 0 ? 1 : -1;
      bool two_coloured = true;
      graph.for_each_neighbour(queue[head], [&](int w) {
        int& theirs = colour[static_cast<std::size_t>(w)];
        if (theirs == mine) two_coloured = false;
        if (theirs >= 0) return;
        theirs = 1 - mine;
        queue.push_back(w);
      });
      if (!two_coloured) return true;
    }
  }
  return difference >= -1 && difference <= 1;
}

class Search {
 public:
  Search(const BitGraph& graph, const Control& control)
      : graph_(graph), control_(control), left_(everything(graph.size())) {}

  HamiltonianSearch run() {
    if (graph_.size() == 0) return {HamiltonianSearch::found, {}};
    if (!is_connected(graph_, left_) || !colours_balance(graph_)) {
      return {HamiltonianSearch::none, {}};
    }
    for (const int start : by_ways_out(left_)) {
      if (enter(start)) return {HamiltonianSearch::found, std::move(path_)};
      if (stopped_) return {HamiltonianSearch::unfinished, {}};
    }
    return {HamiltonianSearch::none, {}};
  }

 private:
  /// True when the path through v can be completed; otherwise everything is as before.
  bool enter(int v) {
    if (++steps_ > control_.max_operations || control_.stop_requested()) {
      stopped_ = true;
      return false;
    }
    path_.push_back(v);
    left_.erase(v);
    if (left_.empty()) return true;
    if (can_go_on(v)) {
      VertexSet next(graph_.size());
      for (int w = 0; w < next.count(); ++w) next.words()[w] = graph_.row(v)[w] & left_.words()[w];
      for (const int w : by_ways_out(next)) {
        if (enter(w)) return true;
        if (stopped_) return false;
      }
    }
    path_.pop_back();
    left_.insert(v);
    return false;
  }

  /// What is left is connected, also to v, and has at most one dead end, where the path may stop.
  bool can_go_on(int v) const {
    VertexSet unmet = left_;
    std::vector<int> met{v};
    for (std::size_t head = 0; head < met.size(); ++head) {
      graph_.meet_neighbours(met[head], unmet, met);
    }
    if (!unmet.empty()) return false;
    int dead_ends = 0;
    left_.for_each([&](int w) {
      const int ways = common(graph_.row(w), left_) + (graph_.joined(v, w) ? 1 : 0);
      dead_ends += ways < 2 ? 1 : 0;
    });
    return dead_ends <= 1;
  }

  std::vector<int> by_ways_out(const VertexSet& vertices) const {
    std::vector<std::pair<int, int>> keyed;
    vertices.for_each([&](int v) { keyed.emplace_back(common(graph_.row(v), left_), v); });
    std::sort(keyed.begin(), keyed.end());
    std::vector<int> sorted;
    sorted.reserve(keyed.size());
    for (const auto& [ways, v] : keyed) sorted.push_back(v);
    return sorted;
  }

  const BitGraph& graph_;
  const Control& control_;
  VertexSet left_;
  std::vector<int> path_;
  int steps_ = 0;
  bool stopped_ = false;
};

}  // namespace

HamiltonianSearch find_hamiltonian_path(const BitGraph& graph, const Control& control) {
  return Search(graph, control).run();
}

void vary_hamiltonian_path(const BitGraph& graph, std::vector<int>& path, const Draw& draw) {
  const int n = static_cast<int>(path.size());
  if (n < 3) return;
  for (int turn = 0; turn < 2 * n; ++turn) {
    if (draw(0, 1) == 1) std::reverse(path.begin(), path.end());
    std::vector<int> inner;  // positions that the last vertex is joined to
    for (int k = 0; k < n - 2; ++k) {
      if (graph.joined(path[static_cast<std::size_t>(k)], path.back())) inner.push_back(k);
    }
    if (inner.empty()) continue;
    const int pick = draw(0, static_cast<int>(inner.size()) - 1);
    std::reverse(path.begin() + inner[static_cast<std::size_t>(pick)] + 1, path.end());
  }
}

}  // namespace zelt::braidwerk::internal
