#pragma once

#include <cstdint>

#include "zeltbraidwerk/clifford/search/internal/state_gates.h"
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
    for (const auto& [loss, gate] : gates_.best(state, looked_at, rng)) {
      const StateGroup::Outlook outlook = state.outlook_after(gate);
      sink(-outlook.worth, Move{gate, outlook.hash});
    }
  }
  static std::uint64_t hash(const State&, const Move& move) { return move.hash; }
  void make(State& state, const Move& move) {
    state.apply(move.gate);
    state.lighten(rounds(state.left()), rng_);
  }
  static bool done(const State& state) { return state.left() == 0; }

 private:
  static constexpr int looked_at = 10;

  /// Information sets for each gate: the more qubits, the more there is to find, until the price is
  /// too high.
  static int rounds(int left) { return left > 60 && left <= 128 ? 24 : 6; }

  Rng& rng_;
  StateGates gates_;
};

}  // namespace zelt::braidwerk::internal
