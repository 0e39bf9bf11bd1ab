#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/linear/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// What a layer does to a block: line `to` gains line `from` (rows, columns), or the one in row
/// `to` and column `from` goes.
struct BlockMove {
  enum Kind : std::uint8_t { rows, columns, entry };
  float gain;
  Kind kind;
  std::uint16_t to;
  std::uint16_t from;
};

/// A block on its way to zero, by rows and by columns.
struct BlockState {
  std::vector<Word> lines[2];
  std::vector<std::uint16_t> weights[2];
  double score = 0;
  int ones = 0;
};

/// The problem of driving a block of a matrix to zero by few layers, for a beam search: the step of
/// the block recursion. The lines of the block stand for wires of two halves, so that a layer has
/// additions among its rows, among its columns, and single entries, no line twice. It is put
/// together greedily by gain.
///
/// What is lowered is the sum of log(w + offset) over the weights of all lines. Light lines count
/// little more than others, unlike in a reduction to a permutation: single entries finish them.
class BlockReduction {
 public:
  using State = BlockState;
  /// The number of a layer that this problem has put together.
  struct Move {
    std::uint32_t layer;
  };

  BlockReduction(int rows, int cols);

  State start(const BitMatrix& block) const;

  template <class Sink>
  void children(const State& state, Rng& rng, Sink&& sink) {
    gather(state);
    for (int variant = 0; variant < block_tuning.variants; ++variant) {
      compose(state, variant == 0 ? 0 : block_tuning.noise, rng);
      sink(child_.score, Move{static_cast<std::uint32_t>(layers_.size() - 1)});
    }
  }

  std::uint64_t hash(const State&, const Move& move) const { return layers_[move.layer].hash; }
  void make(State& state, const Move& move) const;
  bool done(const State& state) const { return state.ones == 0; }

  std::span<const BlockMove> layer(const Move& move) const;

 private:
  struct Layer {
    std::uint64_t hash;  // of the state that it leads to
    std::size_t first;   // of its moves
    std::size_t last;
  };

  Word* line(State& state, int side, int k) const;
  const Word* line(const State& state, int side, int k) const;
  float step(const State& state, int side, int k, int by) const;
  float gain(const State& state, const BlockMove& move) const;
  void add(State& state, int side, int to, int from) const;
  void flip(State& state, int side, int k, int bit) const;
  void make(State& state, const BlockMove& move) const;
  void gather(const State& state);
  void compose(const State& state, float noise, Rng& rng);

  int sizes_[2];
  int strides_[2];
  std::vector<float> f_;
  std::vector<float> up_;     // f(w + 1) - f(w)
  std::vector<float> noise_;  // quantiles of the exponential distribution
  std::vector<Layer> layers_;
  std::vector<BlockMove> pool_;
  State child_;  // scratch: what a layer makes of a state
  std::vector<BlockMove> candidates_;
  std::vector<BlockMove> sorted_;  // scratch
  std::vector<char> taken_[2];     // scratch, by line
};

}  // namespace zelt::braidwerk::internal
