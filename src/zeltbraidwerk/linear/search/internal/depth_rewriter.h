#pragma once

#include <cmath>
#include <vector>

#include "zeltbraidwerk/linear/search/internal/block_rewriter.h"
#include "zeltbraidwerk/linear/search/internal/depth_schedule.h"

namespace zelt::braidwerk::internal {

/// What a shallow circuit is to lower.
struct DepthEnergy {
  float layer = 2;
  float gate = 0.02F;
  float bound = 0.02F;  ///< gates that have no room to move between the layers
};

/// Windows of a CNOT circuit replaced by random shortest circuits for them, the whole then put into
/// layers anew; whether the new circuit stands is drawn by its energy and a temperature.
class DepthRewriter {
 public:
  static constexpr Gathering gathering = Gathering::of_cnots;
  static constexpr bool judges = true;

  DepthRewriter(int wires, int largest, bool permuted, Rng& rng)
      : blocks_(largest, permuted), scheduler_(wires), rng_(rng) {}

  int window_size(Rng& rng) const { return blocks_.window_size(rng); }
  bool rewrite(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) const {
    return blocks_.rewrite(window, uphill, rng, rewrite);
  }

  /// Begins with a list, which it puts into layers.
  void enter(std::vector<Gate>& gates, const DepthEnergy& energy) {
    weights_ = energy;
    depth_ = scheduler_.settle(gates);
    energy_ = energy_with(depth_, gates);
  }
  void set_temperature(float temperature) { temperature_ = temperature; }

  /// Leaves the gates of a circuit that stands in the order of its layers.
  bool accept(std::vector<Gate>& gates) {
    const int depth = scheduler_.tighten(gates);
    const float energy = energy_with(depth, gates);
    const float rise = energy - energy_;
    if (rise > 0 && rng_.unit() >= std::exp(-rise / temperature_)) return false;
    depth_ = depth;
    energy_ = energy;
    return true;
  }

  /// Layers of the last circuit that stood.
  int depth() const { return depth_; }

 private:
  float energy_with(int depth, const std::vector<Gate>& gates) const {
    return weights_.layer * static_cast<float>(depth) +
           weights_.gate * static_cast<float>(gates.size()) +
           weights_.bound * static_cast<float>(scheduler_.bound());
  }

  BlockRewriter blocks_;
  Scheduler scheduler_;
  Rng& rng_;
  DepthEnergy weights_;
  float temperature_ = 0.1F;
  float energy_ = 0;
  int depth_ = 0;
};

}  // namespace zelt::braidwerk::internal
