#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "zeltbraidwerk/linear/search/internal/wire_set.h"

namespace zelt::braidwerk::internal {

/// A tree of few wires along which the wires of a line are cleared. Where none that is wanted lies
/// beside the tree, a wire joins them that lies beside most.
template <int W>
class LineTree {
 public:
  struct Edge {
    int parent;
    int child;
  };

  /// Edges from the root to all of `ends`, parents first, by wires of `left` alone. Fewer where
  /// they are not connected. `near` are the neighbours of each wire.
  const std::vector<Edge>& grow(const WireSet<W>& ends, int root,
                                const std::vector<WireSet<W>>& near, const WireSet<W>& left,
                                std::uint64_t seed) {
    edges_.clear();
    TreeDraws parents(~seed);
    join(ends, root, near, left, seed, no_limit, [&](int v, const WireSet<W>& tree) {
      edges_.push_back({parents.member(at(near, v) & tree), v});
    });
    return edges_;
  }

  /// Gates that clear a line along this tree: one for each edge, and one for each wire without a
  /// bit of the line. When they are more than `limit`, some number above it.
  int gates(const WireSet<W>& ends, int root, const std::vector<WireSet<W>>& near,
            const WireSet<W>& left, std::uint64_t seed, int limit = no_limit) {
    return join(ends, root, near, left, seed, limit, [](int, const WireSet<W>&) {});
  }

  static constexpr int no_limit = std::numeric_limits<int>::max();

 private:
  static const WireSet<W>& at(const std::vector<WireSet<W>>& near, int v) {
    return near[static_cast<std::size_t>(v)];
  }

  template <class Joined>
  int join(const WireSet<W>& ends, int root, const std::vector<WireSet<W>>& near,
           const WireSet<W>& left, std::uint64_t seed, int limit, Joined&& joined) {
    WireSet<W> tree;
    tree.insert(root);
    WireSet<W> rest = without(ends, tree);
    if (rest.empty()) return 0;
    int gates = ends.contains(root) ? 0 : 1;
    WireSet<W> beside = at(near, root) & left;
    const auto add = [&](int v) {
      joined(v, tree);
      tree.insert(v);
      beside |= at(near, v) & left;
      ++gates;
    };
    TreeDraws draws(seed);
    while (!rest.empty() && gates <= limit) {
      const WireSet<W> met = beside & rest;
      if (!met.empty()) {
        rest = without(rest, met);
        met.for_each(add);
        continue;
      }
      const WireSet<W> around = without(beside, tree);
      const int link = beside_most(around, rest, near, seed);
      if (link >= 0) {
        add(link);
        ++gates;
        continue;
      }
      if (!find_way(around, tree, rest, near, left, draws)) break;
      for (std::size_t k = way_.size(); k-- > 0; ++gates) add(way_[k]);
    }
    return gates;
  }

  /// The wire of `around` that has most neighbours in `rest`; -1 where none has any. The seed
  /// decides between equal ones.
  static int beside_most(const WireSet<W>& around, const WireSet<W>& rest,
                         const std::vector<WireSet<W>>& near, std::uint64_t seed) {
    int most = -1;
    int found = -1;
    around.for_each([&](int v) {
      int count = 0;  // of a few bits, sooner than by popcount on the base instruction set
      for (Word word : (at(near, v) & rest).words) {
        for (; word != 0; word &= word - 1) ++count;
      }
      if (count == 0) return;
      const int key = count << 8 | static_cast<int>(std::rotr(seed, v) & 255);
      if (key <= most) return;
      most = key;
      found = v;
    });
    return found;
  }

  /// A shortest way to one of the nearest wires of `rest`, without that one, from its far end.
  bool find_way(const WireSet<W>& around, const WireSet<W>& tree, const WireSet<W>& rest,
                const std::vector<WireSet<W>>& near, const WireSet<W>& left, TreeDraws& draws) {
    levels_.assign(1, around);
    WireSet<W> reached = tree;
    while ((levels_.back() & rest).empty()) {
      reached |= levels_.back();
      WireSet<W> next;
      levels_.back().for_each([&](int v) { next |= at(near, v); });
      next = without(next & left, reached);
      if (next.empty()) return false;
      levels_.push_back(next);
    }
    way_.clear();
    int v = draws.member(levels_.back() & rest);
    for (std::size_t k = levels_.size() - 1; k-- > 0;) {
      v = draws.member(at(near, v) & levels_[k]);
      way_.push_back(v);
    }
    return true;
  }

  std::vector<Edge> edges_;
  std::vector<WireSet<W>> levels_;  // scratch
  std::vector<int> way_;            // scratch
};

}  // namespace zelt::braidwerk::internal
