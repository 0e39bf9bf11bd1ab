#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/reduction.h"
#include "zeltbraidwerk/search/internal/effort.h"

namespace zelt::braidwerk::internal {

/// Layers of gates after or before an operator that bring it down to one-qubit gates, for the beam.
/// A layer is put together greedily: of the gates on wires that it leaves free the one that lowers
/// the cost most, as long as one does; all but one of the layers tried on each side of a state see
/// changes with noise.
///
/// A layer takes time n^3 for each of its gates. A gate counts as n^2 / 40 steps.
class OperatorLayers {
 public:
  using State = OperatorReduction::State;
  /// The number of a layer that this problem has put together.
  struct Move {
    std::uint32_t layer;
  };

  OperatorLayers(int wires, int variants, Rng& rng, Meter& meter);

  State start(OperatorRows rows) const { return problem_.start(std::move(rows)); }
  template <class Sink>
  void children(const State& state, Rng&, Sink&& sink) {
    for (int variant = 0; variant < variants_; ++variant) {
      for (int side = 0; side < 2 && !meter_.ended(); ++side) {
        const double score = compose(state, side, variant != 0);
        const Move move{static_cast<std::uint32_t>(layers_.size() - 1)};
        if (!layers_.back().gates.empty()) sink(score, move);
      }
    }
  }
  std::uint64_t hash(const State&, const Move& move) const { return layers_[move.layer].hash; }
  void make(State& state, const Move& move) const;
  bool done(const State& state) const { return problem_.done(state); }

  /// The gates of these layers, one after the other.
  std::vector<OperatorReduction::Move> gates_of(const std::vector<Move>& moves) const;

 private:
  struct Layer {
    std::uint64_t hash = 0;  // of the operator that it leads to
    std::vector<OperatorReduction::Move> gates;
  };

  double compose(const State& state, int side, bool noisy);
  bool add_gate(int side, bool noisy, Layer& layer);

  OperatorReduction problem_;
  int variants_;
  Rng& rng_;
  Meter& meter_;
  std::vector<Layer> layers_;
  // Scratch of compose.
  State child_;
  std::vector<char> taken_;  // by wire
};

}  // namespace zelt::braidwerk::internal
