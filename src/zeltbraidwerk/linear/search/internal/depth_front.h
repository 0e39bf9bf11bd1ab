#pragma once

#include <vector>

#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

struct LayeredCircuit {
  GateList list;  ///< in the order of its layers
  int depth = 0;
};

/// Circuits of one map none of which is both as short and as shallow as another: from the
/// shallowest to the shortest.
class Front {
 public:
  /// True when the circuit is now the shallowest, or of those the shortest.
  bool offer(int depth, const GateList& list) {
    auto place = circuits_.begin();
    while (place != circuits_.end() && place->depth < depth) ++place;
    const auto as_short = [&](const LayeredCircuit& c) { return c.list.count() <= list.count(); };
    if (place != circuits_.begin() && as_short(place[-1])) return false;
    if (place != circuits_.end() && place->depth == depth && as_short(*place)) return false;
    auto worse = place;
    while (worse != circuits_.end() && worse->list.count() >= list.count()) ++worse;
    place = circuits_.erase(place, worse);
    place = circuits_.insert(place, {list, depth});
    return place == circuits_.begin();
  }

  const std::vector<LayeredCircuit>& circuits() const { return circuits_; }

  /// The circuit for which `layer` times its depth and `gate` times its gates are least.
  const LayeredCircuit& cheapest(float layer, float gate) const {
    const auto cost = [&](const LayeredCircuit& c) {
      return layer * static_cast<float>(c.depth) + gate * static_cast<float>(c.list.count());
    };
    const LayeredCircuit* best = &circuits_.front();
    for (const LayeredCircuit& c : circuits_) {
      if (cost(c) < cost(*best)) best = &c;
    }
    return *best;
  }

 private:
  std::vector<LayeredCircuit> circuits_;
};

}  // namespace zelt::braidwerk::internal
