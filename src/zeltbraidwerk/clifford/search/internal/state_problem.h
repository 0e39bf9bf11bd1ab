#pragma once

#include <cstdint>
#include <span>

#include "zeltbraidwerk/clifford/search/internal/state_gates.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/beam.h"

namespace zelt::braidwerk::internal {

/// The gates that take a state apart, for the beam: those that make its lightest generators
/// lighter. What a gate makes of the generators themselves chooses a few of all gates; each of
/// these is then judged by the best generators after it.
class StateProblem {
 public:
  using State = StateGroup;
  struct Move {
    Gate gate;
    std::uint64_t hash;
  };

  explicit StateProblem(Rng& rng) : rng_(rng) {}

  template <class Sink>
  void children(const State& state, Rng& rng, Sink&& sink) {
    for (const auto& [loss, gate] : gates_.best(state, state_tuning.looked_at, rng)) {
      const StateGroup::Outlook outlook = state.outlook_after(gate);
      sink(-outlook.worth, Move{gate, outlook.hash});
    }
  }
  static std::uint64_t hash(const State&, const Move& move) { return move.hash; }
  void make(State& state, const Move& move) {
    state.apply(move.gate);
    state.lighten(sets_for(state.left()), rng_);
  }
  static std::span<const Gate> gates(const Move& move) { return {&move.gate, 1}; }
  static bool done(const State& state) { return state.left() == 0; }

 private:
  static int sets_for(int left) {
    const bool more = left > state_tuning.few_qubits && left <= state_tuning.many_qubits;
    return more ? state_tuning.more_sets : state_tuning.sets;
  }

  Rng& rng_;
  StateGates gates_;
};

}  // namespace zelt::braidwerk::internal
