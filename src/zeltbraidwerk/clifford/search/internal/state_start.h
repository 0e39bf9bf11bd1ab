#pragma once

#include <vector>

#include "zeltbraidwerk/clifford/search/internal/state_gates.h"
#include "zeltbraidwerk/search/internal/beam.h"

namespace zelt::braidwerk::internal {

struct StateStartOptions {
  int width = 1;
  int children = 16;  ///< gates looked at for each group
  int rounds = 4;     ///< information sets for each gate
  int first_rounds = 100;
  double noise = 0;
};

/// Gates that take a state apart: generators of least weight, gates that make them lighter.
class StateProblem {
 public:
  using State = StateGroup;
  struct Move {
    Gate gate;
    std::uint64_t hash;
  };

  StateProblem(const StateStartOptions& options, Rng& rng) : options_(options), rng_(rng) {}

  template <class Sink>
  void children(const State& state, Rng& rng, Sink&& sink) {
    for (const auto& [change, gate] : gates_.best(state, options_.children, rng)) {
      const StateGroup::Outlook outlook = state.behind(gate);
      sink(static_cast<double>(outlook.cost), Move{gate, outlook.hash});
    }
  }
  static std::uint64_t hash(const State&, const Move& move) { return move.hash; }
  void make(State& state, const Move& move) {
    state.apply(move.gate);
    state.lighten(options_.rounds, rng_);
  }
  static bool done(const State& state) { return state.left() == 0; }

 private:
  StateStartOptions options_;
  Rng& rng_;
  StateGates gates_;
};

}  // namespace zelt::braidwerk::internal
