#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/state_gates.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// Layers of gates that take a state apart, for the beam. A layer is put together greedily: of the
/// gates on wires that it leaves free the one that is worth most, by the best generators after it,
/// as long as one gains; all but one of the layers tried on a state see gains with noise. States
/// are compared by the letters that their generators have.
///
/// A gate that is looked at for a layer counts as a step.
class StateLayers {
 public:
  using State = StateGroup;
  /// The number of a layer that this problem has put together.
  struct Move {
    std::uint32_t layer;
  };

  StateLayers(int variants, Rng& rng, Meter& meter)
      : variants_(variants), rng_(rng), meter_(meter) {}

  template <class Sink>
  void children(const State& state, Rng&, Sink&& sink) {
    for (int variant = 0; variant < variants_ && !meter_.ended(); ++variant) {
      const double score = compose(state, variant != 0);
      const Move move{static_cast<std::uint32_t>(layers_.size() - 1)};
      if (!gates(move).empty()) sink(score, move);
    }
  }

  std::uint64_t hash(const State&, const Move& move) const { return layers_[move.layer].hash; }
  /// In part when the meter ends, with which the beam does.
  void make(State& state, const Move& move) {
    for (const Gate& gate : gates(move)) {
      if (!meter_.ended()) make(state, gate);
    }
  }
  static bool done(const State& state) { return state.left() == 0; }

  std::span<const Gate> gates(const Move& move) const;

 private:
  struct Layer {
    std::uint64_t hash;  // of the state that it leads to
    std::size_t first;   // of its gates
    std::size_t last;
  };

  void make(State& state, Gate gate);
  double compose(const State& state, bool noisy);
  bool add_gate(bool noisy, std::uint64_t& hash);

  int variants_;
  Rng& rng_;
  Meter& meter_;
  StateGates scored_;
  std::vector<Layer> layers_;
  std::vector<Gate> pool_;
  // Scratch of compose.
  State child_;
  std::vector<char> taken_;  // by wire
};

}  // namespace zelt::braidwerk::internal
