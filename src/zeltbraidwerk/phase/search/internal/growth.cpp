#include "zeltbraidwerk/phase/search/internal/growth.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "zeltbraidwerk/foundations/internal/clones.h"

namespace zelt::braidwerk::internal {

namespace {

/// Lanes of a vector, and those that are filled together.
constexpr int vector_lanes = 8;
constexpr int fill_lanes = 32;

constexpr int rounded_up(int n, int unit) {
  return (n + unit - 1) / unit * unit;
}

struct Parities {
  const Word* words;
  int count;
  int stride;
  int n;
  int lanes;
};

struct WeightTables {
  const std::int32_t* cost;
  const std::int32_t* rise;
  const std::int32_t* bend;
};

/// lane[j] = value where bit j is set, 0 elsewhere.
inline void fill_lane(const Word* words, int n, std::int32_t value, std::int32_t* lane) {
  for (int first = 0; first < n; first += fill_lanes) {
    const auto bits = static_cast<std::uint32_t>(words[first / word_bits] >> (first % word_bits));
    for (int j = 0; j < fill_lanes; ++j) {
      lane[first + j] = (bits & (std::uint32_t{1} << j)) != 0 ? value : 0;
    }
  }
}

inline void add_lanes(const std::int32_t* lane, int from, int to, std::int32_t* sums) {
  for (int j = from; j < to; j += vector_lanes) {
    for (int k = 0; k < vector_lanes; ++k) sums[j + k] += lane[j + k];
  }
}

/// Adds for every parity its bend to each pair of its wires, in the row of the lower one, and its
/// rise to each of its wires, in row n. Returns the sum of the costs.
ZELTBRAIDWERK_CLONES std::int64_t sum_over_pairs(const Parities& parities,
                                                 const WeightTables& tables, std::int32_t* lane,
                                                 std::int32_t* sums) {
  const auto [words, count, stride, n, lanes] = parities;
  std::int64_t cost = 0;
  for (int p = 0; p < count; ++p) {
    const Word* parity = words + static_cast<std::ptrdiff_t>(p) * stride;
    int w = 0;
    for (int k = 0; k < stride; ++k) w += std::popcount(parity[k]);
    cost += tables.cost[w];
    fill_lane(parity, n, tables.rise[w], lane);
    add_lanes(lane, 0, lanes, sums + static_cast<std::ptrdiff_t>(n) * lanes);
    fill_lane(parity, n, tables.bend[w], lane);
    for (int k = 0; k < stride; ++k) {
      for (Word rest = parity[k]; rest != 0; rest &= rest - 1) {
        const int wire = k * word_bits + std::countr_zero(rest);
        add_lanes(lane, wire / vector_lanes * vector_lanes, lanes,
                  sums + static_cast<std::ptrdiff_t>(wire) * lanes);
      }
    }
  }
  return cost;
}

struct Rows {
  const Word* words;
  int stride;
};

inline int weight_of_row(const Rows& rows, int r) {
  int w = 0;
  for (int k = 0; k < rows.stride; ++k) w += std::popcount(rows.words[r * rows.stride + k]);
  return w;
}

inline int weight_of_both(const Rows& rows, int r, int s) {
  int w = 0;
  for (int k = 0; k < rows.stride; ++k) {
    w += std::popcount(rows.words[r * rows.stride + k] ^ rows.words[s * rows.stride + k]);
  }
  return w;
}

/// Adds to the gain of each move what it costs the map to have row `control` added to row `target`,
/// and the dual the other way round. Returns the cost of both as they are.
ZELTBRAIDWERK_CLONES std::int64_t add_map_gains(const Rows& map, const Rows& dual, int n,
                                                const std::int32_t* cost, const GrowthMove* moves,
                                                std::size_t count, std::int32_t* scratch,
                                                std::int32_t* gains) {
  std::int64_t sum = 0;
  for (int r = 0; r < n; ++r) {
    scratch[r] = cost[weight_of_row(map, r)];
    scratch[n + r] = cost[weight_of_row(dual, r)];
    sum += scratch[r] + scratch[n + r];
  }
  for (std::size_t k = 0; k < count; ++k) {
    const int control = moves[k].control;
    const int target = moves[k].target;
    gains[k] += cost[weight_of_both(map, control, target)] - scratch[target] +
                cost[weight_of_both(dual, control, target)] - scratch[n + control];
  }
  return sum;
}

}  // namespace

Growth::Growth(int n, int parities, const GrowthCost& cost, const BitGraph* graph)
    : n_(n), stride_(words_for(n)), most_(parities), lanes_(rounded_up(n, vector_lanes)) {
  // Whole numbers, so that sums do not depend on their order; the widest one fits 32 bits.
  const int bits =
      std::clamp(29 - static_cast<int>(std::bit_width(static_cast<unsigned>(parities))), 8, 20);
  unit_ = std::ldexp(1.0, -bits);
  const auto scaled = [&](double value) {
    return static_cast<std::int32_t>(std::lround(value / unit_));
  };
  const auto size = static_cast<std::size_t>(n);
  double value = 0;
  double step = 1;
  weight_.resize(size + 2);
  for (std::size_t w = 2; w < weight_.size(); ++w) {
    value += step;
    step *= cost.decay;
    weight_[w] = scaled(value);
  }
  rise_.resize(size + 1);
  bend_.resize(size + 1);
  map_cost_.resize(size + 1);
  for (std::size_t w = 1; w <= size; ++w) {
    rise_[w] = weight_[w + 1] - weight_[w];
    bend_[w] = weight_[w - 1] - weight_[w] - rise_[w];
    const double p = cost.map_exponent;
    const auto wide = static_cast<double>(w);
    map_cost_[w] = scaled(cost.map_share * (p == 0 ? std::log(wide) : (std::pow(wide, p) - 1) / p));
  }
  for (int t = 0; t < n; ++t) {
    for (int c = 0; c < n; ++c) {
      if (c == t || (graph != nullptr && !graph->joined(c, t))) continue;
      moves_.push_back({static_cast<std::uint16_t>(c), static_cast<std::uint16_t>(t)});
    }
  }
  for (int q = 0; q < n; ++q) {
    print_.push_back(n <= word_bits ? Word{1} << q : Rng::mixed(static_cast<Word>(q) + 1));
  }
  sums_.resize((size + 1) * static_cast<std::size_t>(lanes_));
  lane_.resize(
      std::max<std::size_t>(static_cast<std::size_t>(rounded_up(n, fill_lanes)), 2 * size));
  gains_.resize(moves_.size());
}

GrowthState Growth::start(const BitMatrix& parities) const {
  State state;
  state.words_.resize(offset(most_ + 2 * n_));
  const BitMatrix by_term = parities.transposed();
  for (int p = 0; p < by_term.rows(); ++p) {
    const Word* parity = by_term.row(p);
    if (internal::weight(parity, stride_) < 2) continue;
    std::copy_n(parity, stride_,
                state.words_.begin() + static_cast<std::ptrdiff_t>(offset(state.left_++)));
  }
  for (int q = 0; q < n_; ++q) {
    const Word bit = Word{1} << (q % word_bits);
    state.words_[offset(most_ + q) + static_cast<std::size_t>(q / word_bits)] = bit;
    state.words_[offset(most_ + n_ + q) + static_cast<std::size_t>(q / word_bits)] = bit;
    state.hash_ += Rng::mixed(print_[static_cast<std::size_t>(q)]);
  }
  state.prints_ = print_;
  return state;
}

std::int64_t Growth::score(const State& state) {
  std::fill(sums_.begin(), sums_.end(), 0);
  std::int64_t base =
      sum_over_pairs({state.words_.data(), state.left_, stride_, n_, lanes_},
                     {weight_.data(), rise_.data(), bend_.data()}, lane_.data(), sums_.data());
  const std::int32_t* rises = sums_.data() + static_cast<std::ptrdiff_t>(n_) * lanes_;
  for (std::size_t k = 0; k < moves_.size(); ++k) {
    const auto [low, high] = std::minmax(moves_[k].control, moves_[k].target);
    gains_[k] = rises[moves_[k].target] + sums_[static_cast<std::size_t>(low * lanes_ + high)];
  }
  base += add_map_gains({state.words_.data() + offset(most_), stride_},
                        {state.words_.data() + offset(most_ + n_), stride_}, n_, map_cost_.data(),
                        moves_.data(), moves_.size(), lane_.data(), gains_.data());
  return base;
}

std::uint64_t Growth::hash(const State& state, const Move& move) const {
  const std::uint64_t before = state.prints_[move.target];
  return state.hash_ - Rng::mixed(before) + Rng::mixed(before ^ state.prints_[move.control]);
}

void Growth::make(State& state, const Move& move) const {
  state.hash_ = hash(state, move);
  state.prints_[move.target] ^= state.prints_[move.control];
  const auto word_of = [](int wire) { return static_cast<std::size_t>(wire / word_bits); };
  const int t = move.target % word_bits;
  const int c = move.control % word_bits;
  const Word unit = Word{1} << t;
  int served = -1;
  Word* words = state.words_.data();
  for (int p = 0; p < state.left_; ++p) {
    Word* parity = words + offset(p);
    parity[word_of(move.control)] ^= ((parity[word_of(move.target)] >> t) & 1) << c;
    // What has come up now is the target alone: parities differ, so it is one at most.
    if (parity[word_of(move.target)] == unit &&
        (stride_ == 1 || internal::weight(parity, stride_) == 1))
      served = p;
  }
  if (served >= 0) {
    --state.left_;
    std::copy_n(words + offset(state.left_), stride_, words + offset(served));
  }
  for (int k = 0; k < stride_; ++k) {
    words[offset(most_ + move.target) + static_cast<std::size_t>(k)] ^=
        words[offset(most_ + move.control) + static_cast<std::size_t>(k)];
    words[offset(most_ + n_ + move.control) + static_cast<std::size_t>(k)] ^=
        words[offset(most_ + n_ + move.target) + static_cast<std::size_t>(k)];
  }
}

}  // namespace zelt::braidwerk::internal
