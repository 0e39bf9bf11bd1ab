#pragma once

#include <cmath>
#include <utility>
#include <vector>

#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A rewriter under annealing for few layers: whether a changed circuit stands is drawn by what its
/// layers and, far less, its gates have risen, and a temperature.
template <class Rewriter>
class DepthJudge : public Rewriter {
 public:
  static constexpr bool judges = true;

  DepthJudge(Rewriter rewriter, const GateList& list, Rng& rng)
      : Rewriter(std::move(rewriter)),
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

/// `steps` steps of annealing from a list, or fewer when the effort ends. Calls
/// stands(list, depth) for each changed list that stands.
template <class Rewriter, class F>
void anneal_depth(const GateList& list, Rewriter rewriter, std::uint64_t steps, Rng& rng,
                  Meter& meter, F&& stands) {
  constexpr float uphill = 0.3F;
  constexpr Cooling temperatures{0.4F, 0.05F};
  DepthJudge<Rewriter> judge(std::move(rewriter), list, rng);
  Walk<DepthJudge<Rewriter>> walk(list, judge);
  for (std::uint64_t k = 0; k < steps && !meter.ended(); ++k) {
    if (k % 64 == 0) {
      judge.set_temperature(temperatures.at(static_cast<double>(k) / static_cast<double>(steps)));
    }
    if (walk.step(uphill, rng)) stands(walk.list(), judge.depth());
    meter.step();
  }
}

}  // namespace zelt::braidwerk::internal
