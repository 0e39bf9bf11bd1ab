#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/linear/search/internal/wire_set.h"

namespace zelt::braidwerk::internal {

/// A random tree along which wires of a graph are brought together.
template <int W>
class WireTree {
 public:
  struct Edge {
    int parent;
    int child;
  };

  /// Edges from the root to all of `ends`, parents first, by wires of `left` alone: again and again
  /// one of the nearest ends is joined by a random shortest way. Fewer where they are not
  /// connected. `near` are the neighbours of each wire.
  const std::vector<Edge>& grow(const WireSet<W>& ends, int root,
                                const std::vector<WireSet<W>>& near, const WireSet<W>& left,
                                std::uint64_t seed) {
    TreeDraws draws(seed);
    edges_.clear();
    WireSet<W> tree;
    tree.insert(root);
    WireSet<W> rest = without(ends, tree);
    WireSet<W> beside = at(near, root) & left;
    while (!rest.empty()) {
      if (!find_levels(without(beside, tree), tree, rest, near, left)) break;
      int v = draws.member(levels_.back() & rest);
      const std::size_t joined = edges_.size();
      const WireSet<W> old = tree;
      for (std::size_t k = levels_.size(); k-- > 0;) {
        const int parent = draws.member(at(near, v) & (k > 0 ? levels_[k - 1] : old));
        edges_.push_back({parent, v});
        tree.insert(v);
        rest.erase(v);
        beside |= at(near, v) & left;
        v = parent;
      }
      // The way was found from its far end.
      std::reverse(edges_.begin() + static_cast<std::ptrdiff_t>(joined), edges_.end());
    }
    return edges_;
  }

 private:
  static const WireSet<W>& at(const std::vector<WireSet<W>>& near, int v) {
    return near[static_cast<std::size_t>(v)];
  }

  /// The wires at distance 1, 2, ... from the tree, up to the nearest that is wanted. False where
  /// none is connected.
  bool find_levels(const WireSet<W>& first, WireSet<W> reached, const WireSet<W>& wanted,
                   const std::vector<WireSet<W>>& near, const WireSet<W>& left) {
    levels_.assign(1, first);
    while ((levels_.back() & wanted).empty()) {
      reached |= levels_.back();
      WireSet<W> next;
      levels_.back().for_each([&](int v) { next |= at(near, v); });
      next = without(next & left, reached);
      if (next.empty()) return false;
      levels_.push_back(next);
    }
    return true;
  }

  std::vector<Edge> edges_;
  std::vector<WireSet<W>> levels_;  // scratch
};

}  // namespace zelt::braidwerk::internal
