#pragma once

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "zeltbraidwerk/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A rewriter whose changed circuits a rule accepts or refuses by their layers.
///
/// A Rule has
///   accept(gates, uphill, rng)   whether a changed circuit stands; it may reorder the gates, where
///                                they commute; `uphill` is that of the step
///   depth()                      layers of the last circuit that stood
template <class Rewriter, class Rule>
class DepthJudge {
 public:
  static constexpr Gathering gathering = Rewriter::gathering;
  static constexpr bool judges = true;

  DepthJudge(Rewriter& rewriter, Rule& rule, Rng& rng)
      : rewriter_(rewriter), rule_(rule), rng_(rng) {}

  int window_size(Rng& rng) const { return rewriter_.window_size(rng); }
  bool rewrite(const GateList& list, const Window& window, float uphill, Rng& rng,
               Rewrite& rewrite) {
    uphill_ = uphill;
    return rewrite_window(rewriter_, list, window, uphill, rng, rewrite);
  }
  bool accept(std::vector<Gate>& gates) { return rule_.accept(gates, uphill_, rng_); }

  /// Layers first, then gates.
  int length(const GateList& list) const {
    constexpr int layer = 1 << 15;
    return depth_of(list.gates, list.wires()) * layer + std::min(list.count(), layer - 1);
  }

 private:
  Rewriter& rewriter_;
  Rule& rule_;
  Rng& rng_;
  float uphill_ = 0;
};

/// A circuit with more layers stands with probability uphill^k for k layers more: the odds that a
/// longer block has, for each of them.
class LayerOdds {
 public:
  explicit LayerOdds(const GateList& list)
      : wires_(list.wires()), depth_(depth_of(list.gates, wires_)) {}

  int depth() const { return depth_; }
  bool accept(const std::vector<Gate>& gates, float uphill, Rng& rng) {
    const int depth = depth_of(gates, wires_);
    for (int more = depth - depth_; more > 0; --more) {
      if (!rng.chance(uphill)) return false;
    }
    depth_ = depth;
    return true;
  }

 private:
  int wires_;
  int depth_;
};

/// Annealing: a circuit of higher energy stands with probability exp(-rise / temperature).
class Metropolis {
 public:
  void set_temperature(float temperature) { temperature_ = temperature; }
  int depth() const { return depth_; }

 protected:
  void begin(int depth, float energy) {
    depth_ = depth;
    energy_ = energy;
  }
  /// Whether a circuit of these layers and this energy stands.
  bool accept(int depth, float energy, Rng& rng) {
    const float rise = energy - energy_;
    const bool stands = rise <= 0 || rng.unit() < std::exp(-rise / temperature_);
    if (stands) begin(depth, energy);
    return stands;
  }

 private:
  float temperature_ = 0;
  int depth_ = 0;
  float energy_ = 0;
};

/// The energy of a circuit is that of its layers and, far less, its gates.
class LayerEnergy : public Metropolis {
 public:
  explicit LayerEnergy(const GateList& list) : wires_(list.wires()) {
    const int depth = depth_of(list.gates, wires_);
    begin(depth, energy(depth, list.gates));
  }

  bool accept(const std::vector<Gate>& gates, float, Rng& rng) {
    const int depth = depth_of(gates, wires_);
    return Metropolis::accept(depth, energy(depth, gates), rng);
  }

 private:
  static float energy(int depth, const std::vector<Gate>& gates) {
    return anneal_tuning.layer * static_cast<float>(depth) +
           anneal_tuning.gate * static_cast<float>(gates.size());
  }

  int wires_;
};

/// `steps` steps of annealing from a list, or fewer when the effort ends; the temperature falls as
/// `temperatures` says. Calls stands(list, depth) for each changed list that stands.
template <class Rewriter, class Rule, class F>
void anneal(GateList list, Rewriter& rewriter, Rule& rule, Cooling temperatures,
            std::uint64_t steps, Rng& rng, Meter& meter, F&& stands) {
  if (meter.ended()) return;
  DepthJudge judge(rewriter, rule, rng);
  Walk walk(std::move(list), judge);
  for (std::uint64_t k = 0; k < steps; ++k) {
    if (k % 64 == 0) {
      rule.set_temperature(temperatures.at(static_cast<double>(k) / static_cast<double>(steps)));
    }
    if (walk.step(anneal_tuning.uphill, rng)) stands(walk.list(), rule.depth());
    const bool is_slow = walk.count() > anneal_tuning.long_list;
    if (!meter.step() || (is_slow && meter.ended())) return;
  }
}

/// The same by LayerEnergy.
template <class Rewriter, class F>
void anneal_depth(const GateList& list, Rewriter rewriter, std::uint64_t steps, Rng& rng,
                  Meter& meter, F&& stands) {
  LayerEnergy rule(list);
  anneal(list, rewriter, rule, anneal_tuning.temperatures, steps, rng, meter,
         std::forward<F>(stands));
}

}  // namespace zelt::braidwerk::internal
