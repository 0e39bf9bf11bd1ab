#include "zeltbraidwerk/linear/search/internal/block_layers.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/linear/search/internal/tuning.h"

namespace zelt::braidwerk::internal {
namespace {

/// Ones in each of `count` lines, and in both of each two: of a < b at (b - 1) b / 2 + a.
ZELTBRAIDWERK_CLONES
void count_ones(const Word* lines, int count, int stride, std::uint16_t* weights,
                std::uint16_t* overlaps) {
  for (int b = 0; b < count; ++b) {
    const Word* other = lines + static_cast<std::ptrdiff_t>(b) * stride;
    for (int a = 0; a <= b; ++a) {
      const Word* line = lines + static_cast<std::ptrdiff_t>(a) * stride;
      int ones = 0;
      for (int w = 0; w < stride; ++w) ones += std::popcount(line[w] & other[w]);
      *(a == b ? weights++ : overlaps++) = static_cast<std::uint16_t>(ones);
    }
  }
}

constexpr std::uint32_t unit = 64;  // of noise
constexpr std::uint32_t prices_per_one = 4;
constexpr int per_partner = 1 << 16;  // more than there are ones in a line

}  // namespace

BlockReduction::BlockReduction(int rows, int cols) : sizes_{rows, cols} {
  const int most = std::max(rows, cols);
  for (int w = 0; w <= most; ++w) roots_.push_back(std::sqrt(w + block_tuning.offset));
  for (int k = 0; k < 256; ++k) {
    const double quantile = -std::log((k + 0.5) / 256);
    noise_.push_back(static_cast<std::uint32_t>(std::lround(unit * block_tuning.noise * quantile)));
  }
}

int BlockReduction::variants() {
  return block_tuning.variants;
}

bool BlockReduction::done(const State& state) const {
  const BitMatrix& rows = state.lines[0];
  for (int row = 0; row < sizes_[0]; ++row) {
    if (rows.row_weight(row) != 0) return false;
  }
  return true;
}

void BlockReduction::make(State& state, const BlockMove& move) {
  if (move.kind == BlockMove::entry) {
    state.lines[0].flip(move.to, move.from);
    state.lines[1].flip(move.from, move.to);
    return;
  }
  BitMatrix& lines = state.lines[move.kind];
  BitMatrix& across = state.lines[1 - move.kind];
  lines.add_row(move.from, move.to);
  for_each_bit(lines.row(move.from), lines.stride(), [&](int k) { across.flip(k, move.to); });
}

void BlockReduction::take(const BlockMove& move) {
  make(child_, move);
  pool_.push_back(move);
  taken_[move.kind == BlockMove::columns][move.to] = 1;
  taken_[move.kind != BlockMove::rows][move.from] = 1;
}

/// Additions that take away ones, those that take most first: by prices, which noise raises, in
/// buckets.
void BlockReduction::add_lines(BlockMove::Kind side, bool noisy, Rng& rng) {
  const int count = sizes_[side];
  if (count < 2) return;
  weights_.resize(static_cast<std::size_t>(count));
  overlaps_.resize(static_cast<std::size_t>(count) * static_cast<std::size_t>(count - 1) / 2);
  const BitMatrix& lines = child_.lines[side];
  count_ones(lines.row(0), count, lines.stride(), weights_.data(), overlaps_.data());

  const auto highest = static_cast<std::uint32_t>(sizes_[1 - side]) * 4 * prices_per_one;
  pairs_.clear();
  prices_.clear();
  ends_.assign(highest + 2, 0);
  const auto consider = [&](int to, int from, int twice) {
    const int gain = twice - weights_[static_cast<std::size_t>(from)];
    if (gain <= 0) return;
    const std::uint32_t factor = unit + (noisy ? noise_[rng.next() >> 56] : 0);
    const std::uint32_t price =
        std::min(static_cast<std::uint32_t>(gain) * factor * prices_per_one / unit, highest);
    pairs_.push_back(static_cast<std::uint32_t>(to) << 16 | static_cast<std::uint32_t>(from));
    prices_.push_back(price);
    ++ends_[highest - price + 1];
  };
  const std::uint16_t* overlap = overlaps_.data();
  for (int b = 1; b < count; ++b) {
    for (int a = 0; a < b; ++a) {
      const int twice = 2 * *overlap++;
      consider(a, b, twice);
      consider(b, a, twice);
    }
  }
  for (std::size_t k = 1; k < ends_.size(); ++k) ends_[k] += ends_[k - 1];
  sorted_.resize(pairs_.size());
  for (std::size_t k = 0; k < pairs_.size(); ++k) {
    sorted_[ends_[highest - prices_[k]]++] = pairs_[k];
  }
  for (const std::uint32_t pair : sorted_) {
    const auto to = static_cast<std::uint16_t>(pair >> 16);
    const auto from = static_cast<std::uint16_t>(pair & 0xffffU);
    if (!taken_[side][to] && !taken_[side][from]) take({side, to, from});
  }
}

/// Between the lines that are left, those first that have fewest ones in common with such lines, so
/// that few are left over; of equal ones the lightest.
void BlockReduction::take_entries() {
  for (int side = 0; side < 2; ++side) {
    const BitMatrix& lines = child_.lines[side];
    ranks_[side].assign(static_cast<std::size_t>(sizes_[side]), 0);
    for (int k = 0; k < sizes_[side]; ++k) {
      if (taken_[side][static_cast<std::size_t>(k)]) continue;
      int& rank = ranks_[side][static_cast<std::size_t>(k)];
      for_each_bit(lines.row(k), lines.stride(), [&](int other) {
        rank += 1 + (taken_[1 - side][static_cast<std::size_t>(other)] ? 0 : per_partner);
      });
    }
  }
  const auto lose_partners = [&](int side, int line) {
    const BitMatrix& lines = child_.lines[side];
    for_each_bit(lines.row(line), lines.stride(),
                 [&](int k) { ranks_[1 - side][static_cast<std::size_t>(k)] -= per_partner; });
  };
  for (;;) {
    int row = -1;
    int lowest = std::numeric_limits<int>::max();
    for (int k = 0; k < sizes_[0]; ++k) {
      const int rank = ranks_[0][static_cast<std::size_t>(k)];
      if (rank < per_partner || rank >= lowest || taken_[0][static_cast<std::size_t>(k)]) continue;
      row = k;
      lowest = rank;
    }
    if (row < 0) return;
    int col = -1;
    const BitMatrix& rows = child_.lines[0];
    for_each_bit(rows.row(row), rows.stride(), [&](int k) {
      if (taken_[1][static_cast<std::size_t>(k)]) return;
      const auto rank = [&](int c) { return ranks_[1][static_cast<std::size_t>(c)]; };
      if (col < 0 || rank(k) < rank(col)) col = k;
    });
    lose_partners(0, row);
    lose_partners(1, col);
    take({BlockMove::entry, static_cast<std::uint16_t>(row), static_cast<std::uint16_t>(col)});
  }
}

double BlockReduction::score() const {
  double sum = 0;
  for (const BitMatrix& lines : child_.lines) {
    for (int k = 0; k < lines.rows(); ++k) {
      sum += roots_[static_cast<std::size_t>(lines.row_weight(k))];
    }
  }
  return sum;
}

double BlockReduction::compose(const State& state, bool noisy, Rng& rng) {
  child_ = state;
  for (int side = 0; side < 2; ++side) {
    taken_[side].assign(static_cast<std::size_t>(sizes_[side]), 0);
  }
  const std::size_t first = pool_.size();
  const auto side = rng.coin() ? BlockMove::rows : BlockMove::columns;
  add_lines(side, noisy, rng);
  add_lines(side == BlockMove::rows ? BlockMove::columns : BlockMove::rows, noisy, rng);
  take_entries();
  std::uint64_t hash = 0;
  const BitMatrix& rows = child_.lines[0];
  for (int row = 0; row < sizes_[0]; ++row) {
    for (int w = 0; w < rows.stride(); ++w) hash = Rng::mixed(hash ^ rows.row(row)[w]);
  }
  layers_.push_back({hash, first, pool_.size()});
  return score();
}

std::span<const BlockMove> BlockReduction::layer(const Move& move) const {
  const Layer& layer = layers_[move.layer];
  return {pool_.data() + layer.first, layer.last - layer.first};
}

}  // namespace zelt::braidwerk::internal
