#include "zeltbraidwerk/phase/search/internal/growth.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/phase/search/internal/tuning.h"

namespace zelt::braidwerk::internal {

namespace {

constexpr int vector_lanes = 8;
constexpr int stages_of_halving = 8;
/// A later stage is cheaper than any before it, so that a beam sees it as progress.
constexpr std::int64_t cost_of_stage = std::int64_t{1} << 40;

struct Parities {
  const Word* words;
  int count;
  int stride;
  int blocks;  // vectors that hold all wires
};

struct WeightTables {
  const std::int32_t* cost;
  const std::int32_t* bend;
};

/// `value` in the lanes of the set bits, 0 in the others.
inline void spread(Word bits, std::int32_t value, std::int32_t* lanes) {
  const auto byte = static_cast<std::int32_t>(bits & 255);
  for (int k = 0; k < vector_lanes; ++k) lanes[k] = (byte & (1 << k)) != 0 ? value : 0;
}

/// For parities on `blocks` vectors of wires, where that is known beforehand.
template <int blocks>
inline std::int64_t sum_over_short_parities(const Parities& parities, const WeightTables& tables,
                                            std::int32_t* sums) {
  constexpr int lanes = blocks * vector_lanes;
  std::int64_t cost = 0;
  for (int p = 0; p < parities.count; ++p) {
    const Word parity = parities.words[p];
    const int w = std::popcount(parity);
    cost += tables.cost[w];
    std::int32_t lane[lanes];
    for (int b = 0; b < blocks; ++b) {
      spread(parity >> (b * vector_lanes), tables.bend[w], lane + b * vector_lanes);
    }
    for (Word rest = parity; rest != 0; rest &= rest - 1) {
      std::int32_t* row = sums + std::countr_zero(rest) * lanes;
      for (int k = 0; k < lanes; ++k) row[k] += lane[k];
    }
  }
  return cost;
}

inline std::int64_t sum_over_long_parities(const Parities& parities, const WeightTables& tables,
                                           std::int32_t* lane, std::int32_t* sums) {
  const int lanes = parities.blocks * vector_lanes;
  std::int64_t cost = 0;
  for (int p = 0; p < parities.count; ++p) {
    const Word* parity = parities.words + static_cast<std::ptrdiff_t>(p) * parities.stride;
    int w = 0;
    for (int k = 0; k < parities.stride; ++k) w += std::popcount(parity[k]);
    cost += tables.cost[w];
    for (int first = 0; first < lanes; first += vector_lanes) {
      spread(parity[first / word_bits] >> (first % word_bits), tables.bend[w], lane + first);
    }
    for_each_bit(parity, parities.stride, [&](int wire) {
      std::int32_t* row = sums + static_cast<std::ptrdiff_t>(wire) * lanes;
      for (int k = 0; k < lanes; ++k) row[k] += lane[k];
    });
  }
  return cost;
}

/// Adds for every parity its bend to each pair of its wires, both ways round, and to each of its
/// wires. Returns the sum of the costs.
ZELTBRAIDWERK_CLONES std::int64_t sum_over_pairs(const Parities& parities,
                                                 const WeightTables& tables, std::int32_t* lane,
                                                 std::int32_t* sums) {
  switch (parities.blocks) {
    case 1:
      return sum_over_short_parities<1>(parities, tables, sums);
    case 2:
      return sum_over_short_parities<2>(parities, tables, sums);
    case 3:
      return sum_over_short_parities<3>(parities, tables, sums);
    case 4:
      return sum_over_short_parities<4>(parities, tables, sums);
    default:
      return sum_over_long_parities(parities, tables, lane, sums);
  }
}

struct Rows {
  const Word* words;
  int stride;
};

inline int cost_of_row(const Rows& rows, int r) {
  int w = 0;
  for (int k = 0; k < rows.stride; ++k) w += std::popcount(rows.words[r * rows.stride + k]);
  return w;
}

inline int cost_of_both(const Rows& rows, int r, int s) {
  int w = 0;
  for (int k = 0; k < rows.stride; ++k) {
    w += std::popcount(rows.words[r * rows.stride + k] ^ rows.words[s * rows.stride + k]);
  }
  return w;
}

/// From the sums over pairs to the gains: row t, entry c that of CNOT(c, t). The rise of parities
/// on wire t is a share of their bend, which stands in the diagonal. Row c of the map is added to
/// row t, and row t of the dual to row c. Returns the cost of map and dual as they are.
ZELTBRAIDWERK_CLONES std::int64_t finish_gains(const Rows& map, const Rows& dual, int n, int lanes,
                                               double rise_share, const std::int32_t* cost,
                                               std::int32_t* by_control, std::int32_t* gains) {
  std::int64_t sum = 0;
  for (int t = 0; t < n; ++t) {
    by_control[t] = cost[cost_of_row(dual, t)];
    const std::int32_t own = cost[cost_of_row(map, t)];
    sum += own + by_control[t];
    std::int32_t* row = gains + static_cast<std::ptrdiff_t>(t) * lanes;
    const auto rise = static_cast<std::int32_t>(rise_share * row[t]);
    for (int c = 0; c < lanes; ++c) row[c] += rise - own;
  }
  for (int t = 0; t < n; ++t) {
    std::int32_t* row = gains + static_cast<std::ptrdiff_t>(t) * lanes;
    for (int c = 0; c < t; ++c) {
      const std::int32_t both = cost[cost_of_both(map, c, t)] + cost[cost_of_both(dual, c, t)];
      row[c] += both - by_control[c];
      gains[static_cast<std::ptrdiff_t>(c) * lanes + t] += both - by_control[t];
    }
  }
  return sum;
}

}  // namespace

Growth::Growth(int n, int parities, const GrowthCost& cost, const BitGraph* graph)
    : n_(n),
      stride_(words_for(n)),
      most_(parities),
      lanes_((n + vector_lanes - 1) / vector_lanes * vector_lanes) {
  // Whole numbers, so that sums do not depend on their order; the widest one fits 32 bits.
  const int bits =
      std::clamp(29 - static_cast<int>(std::bit_width(static_cast<unsigned>(parities))), 8, 20);
  unit_ = std::ldexp(1.0, -bits);
  if (graph != nullptr) steiner_.emplace(*graph);
  const auto heaviest = static_cast<std::size_t>(graph != nullptr ? steiner_->most() + 1 : n);
  const std::size_t stages = cost.decay_rise > 0 ? stage(1) + 1 : 1;
  for (std::size_t k = 0; k < stages; ++k) {
    const double decay = cost.decay + cost.decay_rise * static_cast<double>(k) / stages_of_halving;
    const double most = std::max(cost.decay, growth_tuning.most_decay);
    prices_.push_back(prices_at(std::min(decay, most), heaviest));
    if (decay >= most) break;
  }
  map_cost_.resize(heaviest + 1);
  for (std::size_t w = 2; w <= heaviest; ++w) {
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
  const auto size = static_cast<std::size_t>(n);
  gains_.resize(size * static_cast<std::size_t>(lanes_));
  lane_.resize(static_cast<std::size_t>(lanes_));
  by_control_.resize(size);
  changed_.resize(size);
  near_.resize(size);
  for (const Move& move : moves_) near_[move.target].push_back(move.control);
}

std::int32_t Growth::scaled(double value) const {
  return static_cast<std::int32_t>(std::lround(value / unit_));
}

Growth::Prices Growth::prices_at(double decay, std::size_t heaviest) const {
  Prices prices{-decay / (1 + decay), std::vector<std::int32_t>(heaviest + 1),
                std::vector<std::int32_t>(heaviest + 1)};
  double value = 0;
  double step = 1;  // what the way of w - 1 gates is longer than that of w - 2
  for (std::size_t w = 2; w <= heaviest; ++w) {
    value += step;
    prices.cost[w] = scaled(value);
    prices.curvature[w] = -scaled(step * (1 + decay));
    step *= decay;
  }
  return prices;
}

std::size_t Growth::stage(int left) const {
  const double halvings = std::log2(static_cast<double>(std::max(most_, 1)) / std::max(left, 1));
  return static_cast<std::size_t>(stages_of_halving * halvings);
}

void Growth::begin_level(const State& best) {
  stage_ = std::max(stage_, std::min(stage(best.left_), prices_.size() - 1));
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
  std::fill(gains_.begin(), gains_.end(), 0);
  const std::int64_t before = -cost_of_stage * static_cast<std::int64_t>(stage_);
  if (steiner_) return before + score_on_graph(state) + score_map_on_graph(state);
  const Prices& prices = prices_[stage_];
  const std::int64_t base =
      sum_over_pairs({state.words_.data(), state.left_, stride_, lanes_ / vector_lanes},
                     {prices.cost.data(), prices.curvature.data()}, lane_.data(), gains_.data());
  return before + base +
         finish_gains({state.words_.data() + offset(most_), stride_},
                      {state.words_.data() + offset(most_ + n_), stride_}, n_, lanes_,
                      prices.rise_share, map_cost_.data(), by_control_.data(), gains_.data());
}

std::int64_t Growth::score_on_graph(const State& state) {
  const std::vector<std::int32_t>& costs = prices_[stage_].cost;
  std::int64_t sum = 0;
  for (int p = 0; p < state.left_; ++p) {
    const Word* parity = state.words_.data() + offset(p);
    const int own = steiner_->for_each_change(
        parity, [&](int c, int w) { changed_[static_cast<std::size_t>(c)] = w; });
    const std::int32_t cost = costs[static_cast<std::size_t>(own)];
    sum += cost;
    for_each_bit(parity, stride_, [&](int t) {
      for (const int c : near_[static_cast<std::size_t>(t)]) {
        const auto w = static_cast<std::size_t>(changed_[static_cast<std::size_t>(c)]);
        gains_[static_cast<std::size_t>(t * lanes_ + c)] += costs[w] - cost;
      }
    });
  }
  return sum;
}

std::int64_t Growth::score_map_on_graph(const State& state) {
  std::vector<Word> sum(static_cast<std::size_t>(stride_));
  const auto cost = [&](const Word* row, const Word* other, int wire) {
    for (int k = 0; k < stride_; ++k) {
      sum[static_cast<std::size_t>(k)] = row[k] ^ (other == nullptr ? 0 : other[k]);
    }
    sum[static_cast<std::size_t>(wire / word_bits)] |= Word{1} << (wire % word_bits);
    return map_cost_[static_cast<std::size_t>(steiner_->weight(sum.data()))];
  };
  std::int64_t all = 0;
  for (int q = 0; q < n_; ++q) {
    const std::int32_t in_map = cost(map_row(state, q), nullptr, q);
    const std::int32_t in_dual = cost(dual_row(state, q), nullptr, q);
    all += in_map + in_dual;
    for (const int other : near_[static_cast<std::size_t>(q)]) {
      // Row `other` of the map is added to row q, and row `other` of the dual, the other way round.
      gains_[static_cast<std::size_t>(q * lanes_ + other)] +=
          cost(map_row(state, q), map_row(state, other), q) - in_map;
      gains_[static_cast<std::size_t>(other * lanes_ + q)] +=
          cost(dual_row(state, q), dual_row(state, other), q) - in_dual;
    }
  }
  return all;
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
    // The parity that is on a wire now is the target alone: parities differ, so at most one is.
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
