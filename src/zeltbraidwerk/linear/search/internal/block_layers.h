#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// What a layer does to a block: line `to` gains line `from` (rows, columns), or the one in row
/// `to` and column `from` goes.
struct BlockMove {
  enum Kind : std::uint8_t { rows, columns, entry };
  Kind kind;
  std::uint16_t to;
  std::uint16_t from;
};

/// A block on its way to zero, by rows and by columns.
struct BlockState {
  BitMatrix lines[2];
};

/// The problem of driving a block of a matrix to zero by few layers, for a beam search: the step of
/// the block recursion. The lines of the block stand for wires of two halves, so that a layer has
/// additions among its rows, among its columns, and single entries, no line twice.
///
/// A layer is put together greedily: additions on the one side, then on the other, those that take
/// away the most ones first (all but one of the layers tried on a state with random prices), and
/// entries between the lines that are left. Ones alone are counted, which takes an AND of two lines
/// for each pair. States are compared by roots of weights: those of equally many ones are better
/// that have them in few lines.
class BlockReduction {
 public:
  using State = BlockState;
  /// The number of a layer that this problem has put together.
  struct Move {
    std::uint32_t layer;
  };

  BlockReduction(int rows, int cols);

  State start(const BitMatrix& block) const { return {{block, block.transposed()}}; }

  template <class Sink>
  void children(const State& state, Rng& rng, Sink&& sink) {
    for (int variant = 0; variant < variants(); ++variant) {
      const double score = compose(state, variant != 0, rng);
      sink(score, Move{static_cast<std::uint32_t>(layers_.size() - 1)});
    }
  }

  std::uint64_t hash(const State&, const Move& move) const { return layers_[move.layer].hash; }
  void make(State& state, const Move& move) const {
    for (const BlockMove& each : layer(move)) make(state, each);
  }
  bool done(const State& state) const;

  std::span<const BlockMove> layer(const Move& move) const;

 private:
  struct Layer {
    std::uint64_t hash;  // of the state that it leads to
    std::size_t first;   // of its moves
    std::size_t last;
  };

  static int variants();
  static void make(State& state, const BlockMove& move);
  double compose(const State& state, bool noisy, Rng& rng);
  void take(const BlockMove& move);
  void add_lines(BlockMove::Kind side, bool noisy, Rng& rng);
  void take_entries();
  double score() const;

  int sizes_[2];
  std::vector<double> roots_;         // by weight
  std::vector<std::uint32_t> noise_;  // quantiles of the exponential distribution, in 64ths
  std::vector<Layer> layers_;
  std::vector<BlockMove> pool_;

  // Scratch of compose.
  State child_;
  std::vector<char> taken_[2];  // by line
  std::vector<int> ranks_[2];   // by line
  std::vector<std::uint16_t> weights_, overlaps_;
  std::vector<std::uint32_t> pairs_, prices_, ends_, sorted_;
};

}  // namespace zelt::braidwerk::internal
