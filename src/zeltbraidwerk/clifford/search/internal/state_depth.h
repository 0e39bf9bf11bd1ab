#pragma once

#include <cmath>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/state_rewriter.h"

namespace zelt::braidwerk::internal {

/// The rewriter of state circuits under annealing: whether a changed circuit stands is drawn by
/// what its layers and, far less, its gates have risen, and a temperature.
class ShallowStateRewriter : public StateRewriter {
 public:
  static constexpr bool judges = true;

  ShallowStateRewriter(int window, const GateList& list, Rng& rng)
      : StateRewriter(window),
        wires_(list.wires()),
        depth_(depth_of(list.gates, wires_)),
        energy_(energy(depth_, list.gates)),
        rng_(rng) {}

  void set_temperature(float temperature) { temperature_ = temperature; }
  int depth() const { return depth_; }  ///< of the last circuit that stood

  bool accept(const std::vector<Gate>& gates) {
    const int depth = depth_of(gates, wires_);
    const float rise = energy(depth, gates) - energy_;
    if (rise > 0 && rng_.unit() >= std::exp(-rise / temperature_)) return false;
    depth_ = depth;
    energy_ = energy(depth, gates);
    return true;
  }

 private:
  static float energy(int depth, const std::vector<Gate>& gates) {
    return 2.0F * static_cast<float>(depth) + 0.02F * static_cast<float>(gates.size());
  }

  int wires_;
  int depth_;
  float energy_;
  float temperature_ = 0;
  Rng& rng_;
};

}  // namespace zelt::braidwerk::internal
