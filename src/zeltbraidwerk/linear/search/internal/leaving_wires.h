#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/linear/search/internal/wire_set.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// Wires of a device that may leave an elimination next: some of those without which the others are
/// connected. Those with the fewest neighbours left, as what is left had better be compact: on a
/// grid of 8 x 8 circuits are shorter by a sixth than from random ones. Equal ones are drawn.
template <int W>
class LeavingWires {
 public:
  LeavingWires(const BitGraph& graph, int wanted) : graph_(graph), wanted_(wanted) {}

  /// `near` are the neighbours of each wire.
  const std::vector<int>& of(const std::vector<WireSet<W>>& near, const WireSet<W>& left,
                             Rng& rng) {
    VertexSet wires(graph_.size());
    std::copy_n(left.words.begin(), wires.count(), wires.words());
    VertexSet may_leave = non_cutting(graph_, wires);
    if (may_leave.empty()) may_leave = wires;  // the last one
    wires_.clear();
    may_leave.for_each([&](int v) { wires_.push_back(v); });
    if (wires_.size() <= static_cast<std::size_t>(wanted_)) return wires_;
    for (std::size_t k = wires_.size(); k > 1; --k) {
      std::swap(wires_[k - 1], wires_[static_cast<std::size_t>(rng.below(static_cast<int>(k)))]);
    }
    std::ranges::stable_sort(
        wires_, {}, [&](int v) { return (near[static_cast<std::size_t>(v)] & left).members(); });
    wires_.resize(static_cast<std::size_t>(wanted_));
    return wires_;
  }

 private:
  const BitGraph& graph_;
  int wanted_;
  std::vector<int> wires_;
};

}  // namespace zelt::braidwerk::internal
