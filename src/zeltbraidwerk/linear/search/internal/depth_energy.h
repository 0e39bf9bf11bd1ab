#pragma once

#include <vector>

#include "zeltbraidwerk/linear/search/internal/depth_schedule.h"
#include "zeltbraidwerk/search/internal/depth_judge.h"

namespace zelt::braidwerk::internal {

/// What a shallow circuit is to lower.
struct DepthPrices {
  float layer;
  float gate;
  float bound_gate;  ///< of a gate that has no room to move between the layers
};

/// The rule by which a changed circuit is put into layers anew, and stands with the odds of its
/// energy. Leaves the gates of a circuit in the order of its layers.
class DepthEnergy : public Metropolis {
 public:
  /// Puts the gates into layers, which must be as few as the scheduler finds.
  DepthEnergy(std::vector<Gate>& gates, int wires, const DepthPrices& prices)
      : prices_(prices), scheduler_(wires) {
    const int depth = scheduler_.settle(gates);
    begin(depth, energy(depth, gates));
  }

  bool accept(std::vector<Gate>& gates, float, Rng& rng) {
    const int depth = scheduler_.tighten(gates);
    return Metropolis::accept(depth, energy(depth, gates), rng);
  }

 private:
  float energy(int depth, const std::vector<Gate>& gates) const {
    return prices_.layer * static_cast<float>(depth) +
           prices_.gate * static_cast<float>(gates.size()) +
           prices_.bound_gate * static_cast<float>(scheduler_.bound());
  }

  DepthPrices prices_;
  Scheduler scheduler_;
};

}  // namespace zelt::braidwerk::internal
