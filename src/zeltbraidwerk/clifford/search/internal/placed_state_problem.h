#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/placed_group.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/beam.h"

namespace zelt::braidwerk::internal {

/// The gates on the edges of a device that take a state apart, for the beam: as StateProblem, by
/// weights on the device.
class PlacedStateProblem {
 public:
  using State = PlacedGroup;
  struct Move {
    Gate gate;
    std::uint64_t hash;
  };

  PlacedStateProblem(SupportWeights& weights, Rng& rng) : weights_(weights), rng_(rng) {}

  template <class Sink>
  void children(const State& state, Rng& rng, Sink&& sink) {
    choose(state, rng);
    for (const auto& [loss, gate] : best_) {
      child_ = state;
      child_.apply(gate, weights_);
      sink(-child_.worth(), Move{gate, child_.hash()});
    }
  }
  static std::uint64_t hash(const State&, const Move& move) { return move.hash; }
  void make(State& state, const Move& move) {
    state.apply(move.gate, weights_);
    if (state.left() > 0) state.lighten(placed_state_tuning.sets, rng_, weights_);
  }
  static bool done(const State& state) { return state.left() == 0; }

 private:
  struct Scored {
    double loss;
    Gate gate;
  };

  /// Those that lose the least of what the generators are worth, were these to stay the generators.
  void choose(const State& state, Rng& rng);

  SupportWeights& weights_;
  Rng& rng_;
  State child_;
  std::vector<Scored> best_;
};

}  // namespace zelt::braidwerk::internal
