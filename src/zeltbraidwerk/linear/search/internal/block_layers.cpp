#include "zeltbraidwerk/linear/search/internal/block_layers.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace zelt::braidwerk::internal {
namespace {

/// Additions that gain less than this are none: sums of floats in another order differ by less.
constexpr float least_gain = 1e-4F;

}  // namespace

BlockReduction::BlockReduction(int rows, int cols)
    : sizes_{rows, cols}, strides_{words_for(cols), words_for(rows)} {
  const double offset = block_offset(std::max(rows, cols));
  const auto f = [&](int w) { return std::log(w + offset); };
  const int most = std::max(rows, cols) + 1;
  for (int w = 0; w <= most; ++w) f_.push_back(static_cast<float>(f(w) - f(0)));
  for (int w = 0; w < most; ++w) {
    up_.push_back(f_[static_cast<std::size_t>(w) + 1] - f_[static_cast<std::size_t>(w)]);
  }
  for (int k = 0; k < 256; ++k) {
    noise_.push_back(-std::log((static_cast<float>(k) + 0.5F) / 256.0F));
  }
}

BlockState BlockReduction::start(const BitMatrix& block) const {
  State state;
  const BitMatrix sides[2] = {block, block.transposed()};
  for (int side = 0; side < 2; ++side) {
    for (int k = 0; k < sizes_[side]; ++k) {
      const Word* from = sides[side].row(k);
      state.lines[side].insert(state.lines[side].end(), from, from + strides_[side]);
      const int weight = sides[side].row_weight(k);
      state.weights[side].push_back(static_cast<std::uint16_t>(weight));
      if (side == 0) state.ones += weight;
    }
  }
  return state;
}

inline Word* BlockReduction::line(State& state, int side, int k) const {
  return state.lines[side].data() + static_cast<std::ptrdiff_t>(k) * strides_[side];
}

inline const Word* BlockReduction::line(const State& state, int side, int k) const {
  return state.lines[side].data() + static_cast<std::ptrdiff_t>(k) * strides_[side];
}

/// What one more 1, or one less, in a line changes the score by.
inline float BlockReduction::step(const State& state, int side, int k, int by) const {
  const std::size_t w = state.weights[side][static_cast<std::size_t>(k)];
  return by > 0 ? up_[w] : -up_[w - 1];
}

inline float BlockReduction::gain(const State& state, const BlockMove& move) const {
  if (move.kind == BlockMove::entry) {
    return step(state, 0, move.to, -1) + step(state, 1, move.from, -1);
  }
  const int side = move.kind;
  const Word* to = line(state, side, move.to);
  const Word* from = line(state, side, move.from);
  int weight = 0;
  float crossing = 0;
  for (int w = 0; w < strides_[side]; ++w) {
    weight += std::popcount(to[w] ^ from[w]);
    for (Word rest = from[w] & to[w]; rest != 0; rest &= rest - 1) {
      crossing += step(state, 1 - side, w * word_bits + std::countr_zero(rest), -1);
    }
    for (Word rest = from[w] & ~to[w]; rest != 0; rest &= rest - 1) {
      crossing += step(state, 1 - side, w * word_bits + std::countr_zero(rest), 1);
    }
  }
  return crossing + f_[static_cast<std::size_t>(weight)] - f_[state.weights[side][move.to]];
}

inline void BlockReduction::flip(State& state, int side, int k, int bit) const {
  Word& word = line(state, side, k)[bit / word_bits];
  word ^= Word{1} << (bit % word_bits);
  std::uint16_t& weight = state.weights[side][static_cast<std::size_t>(k)];
  weight = static_cast<std::uint16_t>(word >> (bit % word_bits) & 1 ? weight + 1 : weight - 1);
}

inline void BlockReduction::add(State& state, int side, int to, int from) const {
  const Word* source = line(state, side, from);
  for_each_bit(source, strides_[side], [&](int k) {
    flip(state, 1 - side, k, to);
    flip(state, side, to, k);
  });
}

inline void BlockReduction::make(State& state, const BlockMove& move) const {
  if (move.kind == BlockMove::entry) {
    flip(state, 0, move.to, move.from);
    flip(state, 1, move.from, move.to);
  } else {
    add(state, move.kind, move.to, move.from);
  }
}

void BlockReduction::make(State& state, const Move& move) const {
  for (const BlockMove& m : layer(move)) make(state, m);
  state.ones = 0;
  for (const std::uint16_t weight : state.weights[0]) state.ones += weight;
}

void BlockReduction::gather(const State& state) {
  candidates_.clear();
  const auto consider = [&](BlockMove::Kind kind, int to, int from) {
    BlockMove move{0, kind, static_cast<std::uint16_t>(to), static_cast<std::uint16_t>(from)};
    move.gain = gain(state, move);
    if (move.gain < -least_gain) candidates_.push_back(move);
  };
  for (const auto kind : {BlockMove::rows, BlockMove::columns}) {
    for (int to = 0; to < sizes_[kind]; ++to) {
      for (int from = 0; from < sizes_[kind]; ++from) {
        if (from != to) consider(kind, to, from);
      }
    }
  }
  for (int row = 0; row < sizes_[0]; ++row) {
    for_each_bit(line(state, 0, row), strides_[0],
                 [&](int col) { consider(BlockMove::entry, row, col); });
  }
}

void BlockReduction::compose(const State& state, float noise, Rng& rng) {
  sorted_ = candidates_;
  if (noise > 0) {
    for (BlockMove& move : sorted_) move.gain *= 1 + noise * noise_[rng.next() & 255];
  }
  std::sort(sorted_.begin(), sorted_.end(), [](const BlockMove& a, const BlockMove& b) {
    if (a.gain != b.gain) return a.gain < b.gain;
    if (a.kind != b.kind) return a.kind < b.kind;
    return a.to != b.to ? a.to < b.to : a.from < b.from;
  });
  for (int side = 0; side < 2; ++side) {
    taken_[side].assign(static_cast<std::size_t>(sizes_[side]), 0);
  }
  child_ = state;
  const std::size_t first = pool_.size();
  for (const BlockMove& move : sorted_) {
    char& to = taken_[move.kind == BlockMove::columns][move.to];
    char& from = taken_[move.kind != BlockMove::rows][move.from];
    // What was taken has changed the weights of the lines that cross, but no entry between two
    // lines that were not.
    if (to || from || gain(child_, move) >= -least_gain) continue;
    make(child_, move);
    pool_.push_back(move);
    to = from = 1;
  }
  child_.score = 0;
  for (const auto& weights : child_.weights) {
    for (const std::uint16_t weight : weights) child_.score += static_cast<double>(f_[weight]);
  }
  std::uint64_t hash = 0;
  for (const Word word : child_.lines[0]) hash = Rng::mixed(hash ^ word);
  layers_.push_back({hash, first, pool_.size()});
}

std::span<const BlockMove> BlockReduction::layer(const Move& move) const {
  const Layer& layer = layers_[move.layer];
  return {pool_.data() + layer.first, layer.last - layer.first};
}

}  // namespace zelt::braidwerk::internal
