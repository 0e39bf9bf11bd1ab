#include "zeltbraidwerk/linear/search/internal/plane_sorting.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <span>
#include <utility>

#include "zeltbraidwerk/graphs/internal/hamiltonian_path.h"
#include "zeltbraidwerk/linear/search/internal/map_circuits.h"
#include "zeltbraidwerk/linear/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/beam.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr std::size_t at(int k) {
  return static_cast<std::size_t>(k);
}

/// The problem of the beam.
class PlaneSorting {
 public:
  struct State {
    std::vector<Word> rows;            ///< two for each place
    std::vector<std::int16_t> levels;  ///< two for each place
    std::vector<std::int8_t> busy;     ///< by place: layers that gates have taken in advance
    int gates = 0;
    std::uint64_t hash = 0;
  };
  /// Splits that begin in a layer, as this problem has stored them.
  struct Move {
    std::uint32_t first, last;
  };

  /// `variants` layers are tried for each state, all but the first with noise.
  PlaneSorting(int wires, PlaneGates gates, Objective objective, int variants, Rng& rng,
               Meter& meter);

  State start(const BitMatrix& rows);
  template <class Sink>
  void children(const State& state, Rng&, Sink&& sink) {
    price_splits(state);
    meter_.charge(steps_of_sorting(wires_));
    for (int variant = 0; variant < variants_; ++variant) {
      const double score = compose(state, variant != 0);
      sink(score, Move{first_, static_cast<std::uint32_t>(chosen_.size())});
    }
  }
  std::uint64_t hash(const State& state, const Move& move) const;
  void make(State& state, const Move& move) const;
  bool done(const State& state) const;

  std::vector<PlaneGate> gates_of(const std::vector<Move>& moves) const;

 private:
  /// The planes of a place and the next one, split anew.
  struct Choice {
    std::uint16_t place;
    std::uint8_t split;
    std::uint8_t later;  ///< which of the four levels, from the lowest on, go to the later plane
  };
  struct Offer {
    Choice choice;
    float gain;
  };

  int reduce(Word* row) const;
  void add_to_span(const Word* row, int level);
  void clear_span();

  void price_splits(const State& state);
  void price_pair(const State& state, int place);
  double compose(const State& state, bool noisy);
  void match();
  void deal(std::vector<std::int16_t>& levels, const Choice& choice) const;
  double score(const std::vector<std::int16_t>& levels) const;
  void play_on(State& state, int place, int a, int b) const;

  int wires_;
  int words_;  ///< a row
  PlaneGates gates_;
  Objective objective_;
  std::span<const Split> splits_;
  int variants_;
  Rng& rng_;
  Meter& meter_;
  std::vector<Choice> chosen_;  ///< of all layers
  std::uint32_t first_ = 0;     ///< of the last layer
  // Scratch.
  std::vector<Word> span_;  ///< rows of later places, by level
  std::vector<char> spans_;
  std::vector<Word> four_;
  std::vector<std::vector<Offer>> offers_;  ///< by the earlier place
  std::vector<Offer> best_;
  std::vector<std::int16_t> dealt_;
  std::vector<float> total_;
};

PlaneSorting::PlaneSorting(int wires, PlaneGates gates, Objective objective, int variants, Rng& rng,
                           Meter& meter)
    : wires_(wires),
      words_(words_for(2 * wires)),
      gates_(gates),
      objective_(objective),
      splits_(splits_by(gates)),
      variants_(variants),
      rng_(rng),
      meter_(meter),
      span_(at(2 * wires) * at(words_)),
      four_(4 * at(words_)),
      offers_(at(wires)),
      best_(at(wires)),
      total_(at(wires) + 2) {}

/// Which label of an input is lower is drawn, and by Clifford gates what is there without the upper
/// one.
PlaneSorting::State PlaneSorting::start(const BitMatrix& rows) {
  State state;
  state.rows.resize(at(2 * wires_) * at(words_));
  for (int input = 0; input < wires_; ++input) {
    const int labels = gates_ == PlaneGates::cnots ? 2 : 3;
    const int lower = 1 + rng_.below(labels);
    const int upper = 1 + (lower + rng_.below(labels - 1)) % labels;
    for (int r = 0; r < 2 * wires_; ++r) {
      const int found = (rows.get(r, 2 * input) ? 1 : 0) | (rows.get(r, 2 * input + 1) ? 2 : 0);
      const auto flip = [&](int level) {
        state.rows[at(r) * at(words_) + at(level / word_bits)] ^= Word{1} << (level % word_bits);
      };
      const int level = 2 * (wires_ - 1 - input);
      if (found != 0 && found != upper) flip(level);
      if (found != 0 && found != lower) flip(level + 1);
    }
  }
  state.busy.resize(at(wires_));
  state.levels.resize(at(2 * wires_));
  clear_span();
  for (int r = 2 * wires_ - 1; r >= 0; --r) {
    std::copy_n(state.rows.data() + at(r) * at(words_), words_, four_.data());
    const int level = reduce(four_.data());
    add_to_span(four_.data(), level);
    state.levels[at(r)] = static_cast<std::int16_t>(level);
  }
  return state;
}

std::uint64_t PlaneSorting::hash(const State& state, const Move& move) const {
  std::uint64_t sum = Rng::mixed(state.hash + 1);
  for (std::uint32_t k = move.first; k < move.last; ++k) {
    sum = Rng::mixed(sum + std::uint64_t{chosen_[k].place} * 20 + chosen_[k].split);
  }
  return sum;
}

void PlaneSorting::make(State& state, const Move& move) const {
  state.hash = hash(state, move);
  for (std::uint32_t k = move.first; k < move.last; ++k) {
    const Choice& choice = chosen_[k];
    const int place = choice.place;
    const Split& split = splits_[choice.split];
    for (int gate = 0; gate < split.count; ++gate) {
      play_on(state, place, split.gates[at(gate)][0], split.gates[at(gate)][1]);
    }
    deal(state.levels, choice);
    state.gates += split.count;
    state.busy[at(place)] = state.busy[at(place + 1)] = static_cast<std::int8_t>(split.count);
  }
  for (std::int8_t& layers : state.busy) layers = static_cast<std::int8_t>(layers - (layers > 0));
}

bool PlaneSorting::done(const State& state) const {
  return std::ranges::all_of(state.busy, [](int layers) { return layers == 0; }) &&
         score(state.levels) == 0;
}

std::vector<PlaneGate> PlaneSorting::gates_of(const std::vector<Move>& moves) const {
  std::vector<PlaneGate> gates;
  for (const Move& move : moves) {
    for (std::uint32_t k = move.first; k < move.last; ++k) {
      const Split& split = splits_[chosen_[k].split];
      for (int gate = 0; gate < split.count; ++gate) {
        gates.push_back({chosen_[k].place, split.gates[at(gate)][0], split.gates[at(gate)][1]});
      }
    }
  }
  return gates;
}

/// To its lowest level, by rows of the span.
int PlaneSorting::reduce(Word* row) const {
  for (;;) {
    int w = words_ - 1;
    while (row[w] == 0) --w;
    const int level = w * word_bits + word_bits - 1 - std::countl_zero(row[w]);
    if (spans_[at(level)] == 0) return level;
    const Word* known = span_.data() + at(level) * at(words_);
    for (int v = 0; v <= w; ++v) row[v] ^= known[v];
  }
}

void PlaneSorting::add_to_span(const Word* row, int level) {
  std::copy_n(row, words_, span_.data() + at(level) * at(words_));
  spans_[at(level)] = 1;
}

void PlaneSorting::clear_span() {
  spans_.assign(at(2 * wires_), 0);
}

void PlaneSorting::price_splits(const State& state) {
  clear_span();
  for (int place = wires_ - 2; place >= 0; --place) price_pair(state, place);
}

void PlaneSorting::price_pair(const State& state, int place) {
  // Rows of the span with different levels, those of the later plane first.
  std::array<std::pair<int, unsigned>, 4> of_level;
  for (std::size_t k = 0; k < 4; ++k) {
    const std::size_t which = (k + 2) % 4;
    Word* own = four_.data() + k * at(words_);
    std::copy_n(state.rows.data() + (at(2 * place) + which) * at(words_), words_, own);
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
  const int now = disorder(later_levels(splits_[0]));
  for (std::size_t k = 1; k < splits_.size(); ++k) {
    const unsigned later = later_levels(splits_[k]);
    const int less = now - disorder(later);
    if (less <= 0) continue;
    offers.push_back({{static_cast<std::uint16_t>(place), static_cast<std::uint8_t>(k),
                       static_cast<std::uint8_t>(later)},
                      static_cast<float>(less) * sorting_tuning.worth[at(splits_[k].count)]});
  }
}

/// Appends a layer to the choices. Its score counts the layers that it takes in advance, or all
/// gates.
double PlaneSorting::compose(const State& state, bool noisy) {
  for (int place = 0; place + 1 < wires_; ++place) {
    Offer& best = best_[at(place)];
    best.gain = 0;
    for (Offer offer : offers_[at(place)]) {
      if (noisy) offer.gain *= 1 + sorting_tuning.noise * (rng_.unit() - 0.5F);
      if (offer.gain > best.gain) best = offer;
    }
  }
  first_ = static_cast<std::uint32_t>(chosen_.size());
  match();
  dealt_ = state.levels;
  int gates = state.gates;
  int busy = 0;
  for (const int layers : state.busy) busy += std::max(layers - 1, 0);
  for (std::size_t k = first_; k < chosen_.size(); ++k) {
    deal(dealt_, chosen_[k]);
    const int count = splits_[chosen_[k].split].count;
    gates += count;
    busy += 2 * (count - 1);
  }
  const double price = objective_ == Objective::depth ? sorting_tuning.busy_price * busy
                                                      : sorting_tuning.gate_price * gates;
  return score(dealt_) + wires_ * price;
}

/// Pairs without a place in common that gain most together.
void PlaneSorting::match() {
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

void PlaneSorting::deal(std::vector<std::int16_t>& levels, const Choice& choice) const {
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
double PlaneSorting::score(const std::vector<std::int16_t>& levels) const {
  double sum = 0;
  for (int k = 0; k < 2 * wires_; ++k) {
    const int far = k / 2 + levels[at(k)] / 2 - (wires_ - 1);
    sum += far * far;
  }
  return sum;
}

void PlaneSorting::play_on(State& state, int place, int a, int b) const {
  Word* rows = state.rows.data() + at(2 * place) * at(words_);
  for (int w = 0; w < words_; ++w) {
    const auto row = [&](int k) -> Word& { return rows[k * words_ + w]; };
    std::array<Word, 4> four{row(0), row(1), row(2), row(3)};
    play(gates_, a, b, four);
    for (int k = 0; k < 4; ++k) row(k) = four[at(k)];
  }
}

}  // namespace

std::optional<std::vector<PlaneGate>> sort_planes(const BitMatrix& rows, PlaneGates gates,
                                                  Objective objective, int width, Rng& rng,
                                                  Meter& meter) {
  const int n = rows.rows() / 2;
  PlaneSorting problem(n, gates, objective, width > 1 ? sorting_tuning.variants : 1, rng, meter);
  const BeamOptions options{.width = width, .patience = sorting_tuning.patience + n};
  BeamSearch<PlaneSorting> search(problem, options, rng, meter);
  const auto found = search.run(problem.start(rows));
  if (found.empty()) return std::nullopt;
  return problem.gates_of(found.front().moves);
}

int sorting_width(int wires, PlaneGates gates, Objective objective, const Round& round) {
  const bool is_first = round.number == 0;
  const bool is_sure = gates == PlaneGates::cliffords && objective == Objective::depth;
  std::uint64_t steps = round.steps;
  if (is_first && !is_sure) steps /= sorting_tuning.first_part;
  if (!is_first && objective == Objective::depth) steps *= sorting_tuning.layers_part;
  const auto n = static_cast<std::uint64_t>(std::max(wires, 1));
  const std::uint64_t price = 3 * n * steps_of_sorting(wires);
  const std::uint64_t most = std::min(sorting_tuning.most_width, sorting_tuning.memory / (n * n));
  return static_cast<int>(std::min(steps / price, most)) + 1;
}

std::vector<int> sorting_path(const BitGraph& device, std::vector<int> path, int number, Rng& rng) {
  if (number >= 4) vary_hamiltonian_path(device, path, draw_from(rng));
  if (number / 2 % 2 == 1) std::ranges::reverse(path);
  return path;
}

}  // namespace zelt::braidwerk::internal
