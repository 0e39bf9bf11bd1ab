#pragma once

#include <cstddef>
#include <vector>

#include "zeltbraidwerk/linear/search/internal/wire_set.h"

namespace zelt::braidwerk::internal {

/// Rings around each wire: what lies at distance 1, 2, ... by ways through some of the wires.
template <int W>
class WireRings {
 public:
  /// By ways through those of `left`. `near` are the neighbours of each wire.
  void draw(const std::vector<WireSet<W>>& near, const WireSet<W>& left) {
    words_.clear();
    first_.assign(1, 0);
    for (std::size_t v = 0; v < near.size(); ++v) {
      int count = first_.back();
      if (left.contains(static_cast<int>(v))) {
        WireSet<W> reached;
        reached.insert(static_cast<int>(v));
        for (WireSet<W> ring = near[v] & left; !ring.empty(); ++count) {
          words_.insert(words_.end(), ring.words.begin(), ring.words.end());
          reached |= ring;
          WireSet<W> next;
          ring.for_each([&](int w) { next |= near[static_cast<std::size_t>(w)]; });
          ring = without(next & left, reached);
        }
      }
      first_.push_back(count);
    }
  }

  /// How many there are, and W words for each.
  int count(int v) const { return at(v + 1) - at(v); }
  const Word* of(int v) const { return words_.data() + static_cast<std::ptrdiff_t>(at(v)) * W; }

 private:
  int at(int v) const { return first_[static_cast<std::size_t>(v)]; }

  std::vector<Word> words_;  // one ring after the other
  std::vector<int> first_;   // by wire, in rings; one more at the end
};

}  // namespace zelt::braidwerk::internal
