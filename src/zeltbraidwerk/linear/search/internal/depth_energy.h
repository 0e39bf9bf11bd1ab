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
    depth_ = scheduler_.settle(gates);
    energy_ = energy(depth_, gates);
  }

  int depth() const { return depth_; }
  bool accept(std::vector<Gate>& gates, float, Rng& rng) {
    const int depth = scheduler_.tighten(gates);
    const float changed = energy(depth, gates);
    if (!accepts(changed - energy_, rng)) return false;
    depth_ = depth;
    energy_ = changed;
    return true;
  }

 private:
  float energy(int depth, const std::vector<Gate>& gates) const {
    return prices_.layer * static_cast<float>(depth) +
           prices_.gate * static_cast<float>(gates.size()) +
           prices_.bound_gate * static_cast<float>(scheduler_.bound());
  }

  DepthPrices prices_;
  Scheduler scheduler_;
  float energy_ = 0;
  int depth_ = 0;
};

}  // namespace zelt::braidwerk::internal
