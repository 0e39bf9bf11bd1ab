#pragma once

#include <algorithm>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <vector>

#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"

namespace zelt::braidwerk::internal {

/// The tree builders, over any path table with size(), length(from, to) in vertices (0 for a pair
/// out of reach) and walk(from, to, f), which calls f along the path from either end.
struct SteinerTree {
  BitGraph edges;
  VertexSet vertices;

  SteinerTree() = default;
  explicit SteinerTree(int n) : edges(n), vertices(n) {}

  /// Adds the path; calls `enter` for each of its vertices.
  template <class Paths, class F>
  void add_path(Paths& paths, int from, int to, F&& enter) {
    int previous = -1;
    paths.walk(from, to, [&](int v) {
      enter(v);
      if (previous >= 0) edges.join(previous, v);
      previous = v;
    });
  }
};

using Sketches = std::vector<std::set<int>>;

inline void check_terminals(int n, const std::vector<int>& terminals) {
  for (const int v : terminals) {
    if (v < 0 || v >= n) throw std::out_of_range("Terminal outside the graph");
  }
}

/// Grows one tree from the first terminal, taking in the terminal nearest to it each time: of pairs
/// at equal length the smallest terminal, then the smallest tree vertex. A pair out of reach has
/// length 0, so such a terminal is taken at once, without an edge.
///
/// Each terminal keeps the nearest tree vertex and compares it with vertices as they enter.
template <class Paths>
SteinerTree grow_steiner_tree(Paths& paths, const std::vector<int>& terminals) {
  const int n = paths.size();
  check_terminals(n, terminals);
  SteinerTree tree(n);
  if (terminals.empty()) {
    for (int v = 0; v < n; ++v) tree.vertices.insert(v);
    return tree;
  }

  struct Candidate {
    int terminal;
    int nearest;
    int length;
  };
  std::vector<Candidate> remaining;
  VertexSet(n, std::span(terminals).subspan(1)).for_each([&](int t) {
    remaining.push_back({t, -1, -1});
  });
  const auto enter = [&](int v) {
    if (tree.vertices.contains(v)) return;
    tree.vertices.insert(v);
    for (Candidate& c : remaining) {
      const int length = paths.length(c.terminal, v);
      if (c.nearest >= 0 && (length > c.length || (length == c.length && v > c.nearest))) continue;
      c.nearest = v;
      c.length = length;
    }
  };

  enter(terminals.front());
  while (!remaining.empty()) {
    const auto best = std::min_element(
        remaining.begin(), remaining.end(),
        [](const Candidate& a, const Candidate& b) { return a.length < b.length; });
    const Candidate taken = *best;
    remaining.erase(best);
    enter(taken.terminal);
    tree.add_path(paths, taken.nearest, taken.terminal, enter);
  }
  return tree;
}

/// For each vertex the nearest seed of each seed set: of seeds at equal distance one that its
/// sketch holds already, or else the smallest.
template <class Paths>
Sketches sketch_vertices(Paths& paths, const std::vector<std::set<int>>& seed_sets) {
  Sketches sketches(static_cast<std::size_t>(paths.size()));
  for (int v = 0; v < paths.size(); ++v) {
    std::set<int>& sketch = sketches[static_cast<std::size_t>(v)];
    for (const std::set<int>& seeds : seed_sets) {
      int best = -1;
      int best_length = paths.size() + 19;  // beyond the longest path
      for (const int seed : seeds) {
        const int length = paths.length(v, seed);
        if (length < best_length || (length == best_length && sketch.contains(seed))) {
          best = seed;
          best_length = length;
        }
      }
      sketch.insert(best);
    }
  }
  return sketches;
}

/// Joins every terminal to one seed that all of their sketches hold, the one that needs the fewest
/// vertices, of equal ones the smallest. Connected, but the paths may close a cycle. A seed out of
/// reach of a terminal is passed over; nothing when no seed is left.
template <class Paths>
std::optional<SteinerTree> join_at_seed(Paths& paths, const Sketches& sketches,
                                        const std::vector<int>& terminals) {
  const int n = paths.size();
  check_terminals(n, terminals);
  std::optional<SteinerTree> best;
  if (terminals.empty()) return best;
  const auto sketch = [&](int v) -> const std::set<int>& {
    return sketches.at(static_cast<std::size_t>(v));
  };
  int best_size = n + 1;
  for (const int seed : sketch(terminals.front())) {
    if (!std::all_of(terminals.begin(), terminals.end(), [&](int t) {
          return sketch(t).contains(seed) && paths.length(t, seed) > 0;
        })) {
      continue;
    }
    SteinerTree tree(n);
    tree.vertices.insert(seed);
    int size = 1;
    for (const int t : terminals) {
      tree.add_path(paths, t, seed, [&](int v) {
        if (!tree.vertices.contains(v)) ++size;
        tree.vertices.insert(v);
      });
    }
    if (size < best_size) {
      best = std::move(tree);
      best_size = size;
    }
  }
  return best;
}

/// Graph::steiner_tree without the copy: the tree as it stands in the graph's cache.
const structures::Graph& cached_tree(structures::Graph& graph, std::vector<int>& terminals);

/// `size` draws of a vertex, repeats collapsed.
std::set<int> draw_seed_set(int n, int size, const Draw& draw);

/// Seed sets of 1, 2, 4, ... draws, as many as the floor of log2(n).
std::vector<std::set<int>> draw_seed_sets(int n, const Draw& draw);

}  // namespace zelt::braidwerk::internal
