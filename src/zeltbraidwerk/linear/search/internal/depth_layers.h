#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "zeltbraidwerk/linear/search/internal/reduction.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

struct LayerCost {
  ReductionCost addition;  ///< without a focus
  int variants = 1;        ///< layers of each side to try on a state
  float noise = 0.2F;      ///< of all variants but the first, in units of the gain
};

/// The problem of reducing a matrix by few layers, for a beam search: a layer is a set of additions
/// of one side that share no line, put together greedily by gain.
class LayerReduction {
 public:
  using State = ReductionState;
  /// The number of a layer that this problem has put together.
  struct Move {
    std::uint32_t layer;
  };

  LayerReduction(int n, const LayerCost& cost);

  State start(const BitMatrix& m) const { return additions_.start(m); }

  template <class Sink>
  void children(const State& state, Rng& rng, Sink&& sink) {
    forget();
    additions_.score_children(state);
    for (int variant = 0; variant < cost_.variants; ++variant) {
      for (int side = 0; side < 2; ++side) {
        if (compose(state, side, variant == 0 ? 0 : cost_.noise, rng)) {
          sink(additions_.score(child_), Move{static_cast<std::uint32_t>(layers_.size() - 1)});
        }
      }
    }
  }

  std::uint64_t hash(const State&, const Move& move) const { return layers_[move.layer].hash; }
  void make(State& state, const Move& move);
  bool done(const State& state) const { return additions_.done(state); }

  /// Empty once another level was begun without it.
  std::span<const SideAddition> layer(const Move& move) const;
  /// The problem of single additions, on the same states.
  const Reduction& additions() const { return additions_; }

 private:
  struct Layer {
    std::uint64_t hash;  // of the state that it leads to
    std::size_t first;   // of its additions
    std::size_t last;
    bool made = false;
  };
  struct Candidate {
    float gain;
    std::uint16_t to;
    std::uint16_t from;
  };

  /// Puts another layer together; false when there is none.
  bool compose(const State& state, int side, float noise, Rng& rng);
  void gather(int side, float noise, Rng& rng);
  /// Drops the additions of layers that no state was made by, once others were: those of a level
  /// are made before the next is begun.
  void forget();
  void take(int side, const Candidate& candidate);

  int n_;
  LayerCost cost_;
  Reduction additions_;
  std::vector<SideAddition> pool_;
  std::vector<Layer> layers_;
  std::size_t settled_ = 0;            // layers before it were made, or dropped
  bool any_made_ = false;              // of the later ones
  std::vector<float> noise_;           // quantiles of the exponential distribution
  State child_;                        // scratch: what a layer makes of a state
  std::vector<Candidate> candidates_;  // scratch
  std::vector<char> taken_;            // scratch, by line
};

}  // namespace zelt::braidwerk::internal
