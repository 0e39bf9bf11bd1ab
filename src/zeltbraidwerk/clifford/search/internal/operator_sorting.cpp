#include "zeltbraidwerk/clifford/search/internal/operator_sorting.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

#include "zeltbraidwerk/clifford/search/internal/reduction.h"

namespace zelt::braidwerk::internal {
namespace {

/// A way to split what the planes of two neighbours span. Rows of the span are numbers, a bit each
/// for labels 1 and 2 of the earlier wire and those of the later one.
struct Split {
  std::array<unsigned, 4> rows{1, 2, 4, 8};  ///< what is on these after the gates
  int count = 0;
  std::array<std::array<int, 2>, 3> gates{};  ///< labels on both wires, each at its time

  constexpr std::array<unsigned, 3> later() const { return {rows[2], rows[3], rows[2] ^ rows[3]}; }
};

constexpr Split after_gate(Split split, int a, int b) {
  auto& rows = split.rows;
  unsigned gate = 0;
  for (int k = 0; k < 2; ++k) {
    if ((a >> k & 1) != 0) gate ^= rows[static_cast<std::size_t>(k)];
    if ((b >> k & 1) != 0) gate ^= rows[static_cast<std::size_t>(2 + k)];
  }
  for (int k = 0; k < 4; ++k) {
    if (k % 2 + 1 != (k < 2 ? a : b)) rows[static_cast<std::size_t>(k)] ^= gate;
  }
  split.gates[static_cast<std::size_t>(split.count++)] = {a, b};
  return split;
}

constexpr int split_count = 20;

/// The one without gates first.
constexpr std::array<Split, split_count> make_splits() {
  std::array<Split, split_count> found;
  std::size_t count = 1;
  const auto is_known = [&](const Split& split) {
    const auto planes = [](const Split& each) {
      const auto rows = each.later();
      return 1U << rows[0] | 1U << rows[1] | 1U << rows[2];
    };
    return std::any_of(found.begin(), found.begin() + static_cast<std::ptrdiff_t>(count),
                       [&](const Split& known) { return planes(known) == planes(split); });
  };
  for (std::size_t k = 0; k < count; ++k) {
    for (int gate = 0; gate < 9 && count < split_count; ++gate) {
      const Split next = after_gate(found[k], 1 + gate / 3, 1 + gate % 3);
      if (!is_known(next)) found[count++] = next;
    }
  }
  return found;
}

constexpr std::array<Split, split_count> splits = make_splits();

/// Of the levels 0 to 3, by those in the later plane: twice the inversions, and one more where the
/// lowest is in the earlier.
int disorder(unsigned later) {
  int twice = (later & 1) != 0 ? 0 : 1;
  for (unsigned high = 1; high < 4; ++high) {
    if ((later >> high & 1) != 0) twice += 2 * std::popcount(~later & ((1U << high) - 1));
  }
  return twice;
}

}  // namespace

OperatorSorting::OperatorSorting(const OperatorRows& rows, SortingWay way, int variants, Rng& rng,
                                 Meter& meter)
    : rows_(rows),
      way_(std::move(way)),
      wires_(rows.wires()),
      words_(words_for(2 * wires_)),
      variants_(variants),
      rng_(rng),
      meter_(meter),
      span_(at(2 * wires_) * at(words_)),
      four_(4 * at(words_)),
      offers_(at(wires_)),
      best_(at(wires_)),
      total_(at(wires_) + 2) {
  for (int k = 0; k < wires_; ++k) {
    const int lower = 1 + rng.below(3);
    ranked_.push_back({lower, other_labels[lower][rng.below(2)]});
  }
}

OperatorSorting::State OperatorSorting::start() {
  State state;
  state.rows.resize(at(2 * wires_) * at(words_));
  state.busy.resize(at(wires_));
  state.levels.resize(at(2 * wires_));
  clear_span();
  for (int place = wires_ - 1; place >= 0; --place) {
    for (int k = 0; k < 2; ++k) {
      Word* own = state.rows.data() + at(2 * place + k) * at(words_);
      for (int input = 0; input < wires_; ++input) {
        const int label =
            rows_.label_at(way_.side, way_.path[at(place)], 1 + k, way_.path[at(input)]);
        if (label == 0) continue;
        const auto& [lower, upper] = ranked_[at(input)];
        const int level = 2 * (way_.turned ? input : wires_ - 1 - input);
        const auto flip = [&](int bit) { own[bit / word_bits] ^= Word{1} << (bit % word_bits); };
        if (label != upper) flip(level);
        if (label != lower) flip(level + 1);
      }
      std::copy_n(own, words_, four_.data());
      const int level = reduce(four_.data());
      add_to_span(four_.data(), level);
      state.levels[at(2 * place + k)] = static_cast<std::int16_t>(level);
    }
  }
  return state;
}

std::uint64_t OperatorSorting::hash(const State& state, const Move& move) const {
  std::uint64_t sum = Rng::mixed(state.hash + 1);
  for (std::uint32_t k = move.first; k < move.last; ++k) {
    sum = Rng::mixed(sum + std::uint64_t{chosen_[k].place} * split_count + chosen_[k].split);
  }
  return sum;
}

void OperatorSorting::make(State& state, const Move& move) const {
  state.hash = hash(state, move);
  for (std::uint32_t k = move.first; k < move.last; ++k) {
    const Choice& choice = chosen_[k];
    const int place = choice.place;
    const Split& split = splits[choice.split];
    for (int gate = 0; gate < split.count; ++gate) {
      turn(state, place, split.gates[at(gate)][0], split.gates[at(gate)][1]);
    }
    deal(state.levels, choice);
    state.busy[at(place)] = state.busy[at(place + 1)] = static_cast<std::int8_t>(split.count);
  }
  for (std::int8_t& layers : state.busy) layers = static_cast<std::int8_t>(layers - (layers > 0));
}

bool OperatorSorting::done(const State& state) const {
  return std::ranges::all_of(state.busy, [](int layers) { return layers == 0; }) &&
         score(state.levels) == 0;
}

GateList OperatorSorting::circuit(const std::vector<Move>& moves) const {
  OperatorRows left = rows_;
  std::vector<OperatorReduction::Move> gates;
  for (const Move& move : moves) {
    for (std::uint32_t k = move.first; k < move.last; ++k) {
      const Split& split = splits[chosen_[k].split];
      const int wire = way_.path[chosen_[k].place];
      const int next = way_.path[std::size_t{chosen_[k].place} + 1];
      for (int g = 0; g < split.count; ++g) {
        Gate gate{end_of(wire, split.gates[at(g)][0]), end_of(next, split.gates[at(g)][1])};
        if (wire > next) std::swap(gate.a, gate.b);
        left.multiply(way_.side, gate);
        gates.push_back({way_.side, gate});
      }
    }
  }
  return circuit_of(left, gates);
}

/// To its lowest level, by rows of the span.
int OperatorSorting::reduce(Word* row) const {
  for (;;) {
    int w = words_ - 1;
    while (row[w] == 0) --w;
    const int level = w * word_bits + word_bits - 1 - std::countl_zero(row[w]);
    if (spans_[at(level)] == 0) return level;
    const Word* known = span_.data() + at(level) * at(words_);
    for (int v = 0; v <= w; ++v) row[v] ^= known[v];
  }
}

void OperatorSorting::add_to_span(const Word* row, int level) {
  std::copy_n(row, words_, span_.data() + at(level) * at(words_));
  spans_[at(level)] = 1;
}

void OperatorSorting::clear_span() {
  spans_.assign(at(2 * wires_), 0);
}

void OperatorSorting::price_splits(const State& state) {
  clear_span();
  for (int place = wires_ - 2; place >= 0; --place) price_pair(state, place);
}

void OperatorSorting::price_pair(const State& state, int place) {
  // Rows of the span with different levels, those of the later plane first.
  std::array<std::pair<int, unsigned>, 4> of_level;
  for (std::size_t k = 0; k < 4; ++k) {
    const std::size_t which = (k + 2) % 4;
    Word* own = four_.data() + k * at(words_);
    std::copy_n(row(state, place, static_cast<int>(which)), words_, own);
    unsigned sum = 1U << which;
    for (;;) {
      const int level = reduce(own);
      std::size_t same = 0;
      while (same < k && of_level[same].first != level) ++same;
      of_level[k] = {level, sum};
      if (same == k) break;
      for (int w = 0; w < words_; ++w) own[w] ^= four_[same * at(words_) + at(w)];
      sum ^= of_level[same].second;
    }
  }
  for (std::size_t k = 0; k < 2; ++k) {
    add_to_span(four_.data() + k * at(words_), of_level[k].first);
  }

  auto& offers = offers_[at(place)];
  offers.clear();
  if (state.busy[at(place)] > 0 || state.busy[at(place + 1)] > 0) return;
  std::ranges::sort(of_level);
  std::array<int, 16> level_of{};
  for (unsigned sum = 1; sum < 16; ++sum) {
    unsigned row = 0;
    for (std::size_t k = 0; k < 4; ++k) row ^= (sum >> k & 1) != 0 ? of_level[k].second : 0;
    level_of[row] = std::bit_width(sum) - 1;
  }
  const auto later_levels = [&](const Split& split) {
    unsigned levels = 0;
    for (const unsigned row : split.later()) levels |= 1U << level_of[row];
    return levels;
  };
  const int now = disorder(later_levels(splits[0]));
  for (std::size_t k = 1; k < split_count; ++k) {
    const unsigned later = later_levels(splits[k]);
    const int less = now - disorder(later);
    if (less <= 0) continue;
    offers.push_back(
        {{static_cast<std::uint16_t>(place), static_cast<std::uint8_t>(k),
          static_cast<std::uint8_t>(later)},
         static_cast<float>(less) * clifford_tuning.worth_of_split[at(splits[k].count)]});
  }
}

/// Appends a layer to the choices; its score counts layers that it takes in advance.
double OperatorSorting::compose(const State& state, bool noisy) {
  for (int place = 0; place + 1 < wires_; ++place) {
    Offer& best = best_[at(place)];
    best.gain = 0;
    for (Offer offer : offers_[at(place)]) {
      if (noisy) offer.gain *= 1 + clifford_tuning.sorting_noise * (rng_.unit() - 0.5F);
      if (offer.gain > best.gain) best = offer;
    }
  }
  first_ = static_cast<std::uint32_t>(chosen_.size());
  match();
  dealt_ = state.levels;
  int busy = 0;
  for (const int layers : state.busy) busy += std::max(layers - 1, 0);
  for (std::size_t k = first_; k < chosen_.size(); ++k) {
    deal(dealt_, chosen_[k]);
    busy += 2 * (splits[chosen_[k].split].count - 1);
  }
  return score(dealt_) + clifford_tuning.busy_price * wires_ * busy;
}

/// Pairs without a place in common that gain most together.
void OperatorSorting::match() {
  for (int place = wires_ - 2; place >= 0; --place) {
    total_[at(place)] =
        std::max(total_[at(place + 1)], best_[at(place)].gain + total_[at(place + 2)]);
  }
  for (int place = 0; place + 1 < wires_; ++place) {
    if (total_[at(place)] == total_[at(place + 1)]) continue;
    chosen_.push_back(best_[at(place)].choice);
    ++place;
  }
}

void OperatorSorting::deal(std::vector<std::int16_t>& levels, const Choice& choice) const {
  const auto of_pair = levels.begin() + 2 * std::ptrdiff_t{choice.place};
  std::sort(of_pair, of_pair + 4);
  std::array<std::int16_t, 4> dealt{};
  std::size_t earlier = 0, later = 2;
  for (std::size_t k = 0; k < 4; ++k) {
    dealt[(choice.later >> k & 1) != 0 ? later++ : earlier++] = of_pair[static_cast<int>(k)];
  }
  std::ranges::copy(dealt, of_pair);
}

/// Squares of how far levels are from their places.
double OperatorSorting::score(const std::vector<std::int16_t>& levels) const {
  double sum = 0;
  for (int k = 0; k < 2 * wires_; ++k) {
    const int far = k / 2 + levels[at(k)] / 2 - (wires_ - 1);
    sum += far * far;
  }
  return sum;
}

/// A gate with these labels on a place and the next one, as OperatorRows::multiply has it.
void OperatorSorting::turn(State& state, int place, int a, int b) const {
  Word* rows = state.rows.data() + at(2 * place) * at(words_);
  const auto row = [&](int k) { return rows + k * words_; };
  for (int w = 0; w < words_; ++w) {
    Word gate = 0;
    for (int k = 0; k < 2; ++k) {
      if ((a >> k & 1) != 0) gate ^= row(k)[w];
      if ((b >> k & 1) != 0) gate ^= row(2 + k)[w];
    }
    for (int k = 0; k < 4; ++k) {
      if (k % 2 + 1 != (k < 2 ? a : b)) row(k)[w] ^= gate;
    }
  }
}

}  // namespace zelt::braidwerk::internal
