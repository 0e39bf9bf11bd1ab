#include "zeltbraidwerk/pauli/search/internal/network_problem.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "zeltbraidwerk/pauli/search/internal/tuning.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr const NetworkWindowTuning& tuning = network_window_tuning;
constexpr std::int64_t least_gain =
    (std::int64_t{1} << NetworkCosts::unit_bits) / network_window_tuning.least_gain;

std::uint32_t times(std::uint32_t factor, std::uint32_t value) {
  return static_cast<std::uint32_t>(std::uint64_t{factor} * value >> NetworkCosts::factor_bits);
}

double emphasis_at(const NetworkSettings& settings, int place) {
  return settings.emphasis == Emphasis::by_place ? std::pow(1 + place / settings.rate, -2.0) : 1;
}

int window_size(const NetworkSettings& settings, bool in_order, int count) {
  int size = std::min(count, in_order ? tuning.rows_in_order : tuning.most_rows);
  if (!in_order && settings.emphasis == Emphasis::by_place) {
    const double places = settings.rate * (std::pow(tuning.least_emphasis, -0.5) - 1);
    size = std::min(size, std::max(1, static_cast<int>(places)));
  }
  return size;
}

double mean_weight(const RotationList& list) {
  double sum = 0;
  for (int row = 0; row < list.count(); ++row) {
    const Word* x = list.string(row);
    for (int w = 0; w < list.words(); ++w) sum += std::popcount(x[w] | x[list.words() + w]);
  }
  return list.count() == 0 ? 1 : sum / list.count();
}

End single_letter(int letter) {
  return end_of(letter / 3, letter % 3 + 1);
}

}  // namespace

NetworkProblem::NetworkProblem(const RotationList& list, bool in_order,
                               const NetworkSettings& settings, const BitGraph* graph, Rng& rng)
    : list_(list),
      in_order_(in_order),
      settings_(settings),
      costs_(settings, graph == nullptr ? list.qubits() : 3 * list.qubits()),
      gate_costs_(list.qubits(), graph),
      pairs_(graph == nullptr ? list.qubits() : 0),
      edges_(gate_costs_),
      reach_(graph == nullptr ? Reach() : Reach(*graph)),
      on_graph_(graph != nullptr),
      capacity_(window_size(settings, in_order, list.count())),
      slot_words_(static_cast<std::size_t>(words_for(capacity_))) {
  const int n = list.qubits();
  const int usual = static_cast<int>(std::lround(std::max(mean_weight(list), 0.75 * n)));
  usual_ = costs_.of(std::min(usual, n + 1));
  for (int k = 0; k < capacity_; ++k) {
    by_place_.push_back(NetworkCosts::factor(emphasis_at(settings, k)));
  }
  for (int k = 0; k <= std::max(tuning.longest_chain, capacity_); ++k) {
    by_rate_.push_back(NetworkCosts::factor(settings.emphasis == Emphasis::by_chain
                                                ? std::pow(settings.rate, k)
                                                : std::pow(1 + k, -settings.rate)));
  }
  if (settings.jitter > 0) {
    for (int row = 0; row < list.count(); ++row) {
      const double drawn = settings.jitter * (2 * static_cast<double>(rng.unit()) - 1);
      jitter_.push_back(NetworkCosts::factor((1 + drawn) / (1 + settings.jitter)));
    }
  }
  letters_.resize(static_cast<std::size_t>(n) + 1);
  string_.resize(2 * static_cast<std::size_t>(list.words()));
  chains_.resize((tuning.longest_chain + 1) * slot_words_);
}

std::uint64_t NetworkProblem::id(int row) {
  return Rng::mixed(0xd1342543de82ef95u * (static_cast<std::uint64_t>(row) + 1));
}

NetworkState NetworkProblem::start(std::vector<NetworkEvent>* events) {
  State state;
  state.frame = LabelFrame(list_.qubits());
  state.left.resize(static_cast<std::size_t>(words_for(list_.count())));
  for (int row = 0; row < list_.count(); ++row) {
    state.left[static_cast<std::size_t>(row / word_bits)] |= Word{1} << (row % word_bits);
  }
  state.count_left = list_.count();
  open_window(state);
  for (int q = 0; q < list_.qubits() && !in_order_; ++q) serve_on(state, q, events);
  if (in_order_) serve_in_order(state, events);
  settle(state);
  return state;
}

NetworkState NetworkProblem::taken_over(const State& other) {
  State state;
  state.frame = other.frame;
  state.left = other.left;
  state.count_left = other.count_left;
  state.served = other.served;
  open_window(state);
  return state;
}

void NetworkProblem::open_window(State& state) {
  const int n = list_.qubits();
  state.letters = LetterRows(n, capacity_);
  if (in_order_) {
    state.before.resize(static_cast<std::size_t>(capacity_) * slot_words_);
    state.free_slots.resize(slot_words_);
    for (int k = 0; k < capacity_; ++k) {
      state.free_slots[static_cast<std::size_t>(k / word_bits)] |= Word{1} << (k % word_bits);
    }
  }
  if (settings_.tail > 0) {
    state.images = LetterRows(n, 2 * n);
    std::vector<Word> letter(string_.size());
    for (int q = 0; q < 2 * n; ++q) {
      const auto word = static_cast<std::size_t>(q % n / word_bits + (q < n ? 0 : list_.words()));
      letter[word] = Word{1} << (q % n % word_bits);
      append(state.images, letter.data(), state.frame);
      letter[word] = 0;
    }
  }
  settle(state);
}

void NetworkProblem::play(State& state, const Gate& gate, std::vector<NetworkEvent>* events) {
  if (events != nullptr) events->push_back({gate, -1});
  state.frame.play(gate);
  state.letters.play(gate);
  state.images.play(gate);
  if (in_order_) {
    serve_in_order(state, events);
    return;
  }
  const int before = state.count_left;
  serve_on(state, wire_of(gate.a), events);
  serve_on(state, wire_of(gate.b), events);
  if (state.count_left != before) settle(state);
}

void NetworkProblem::make(State& state, const Move& move) {
  state.lock = move.lock;
  play(state, move.gate);
}

Gate NetworkProblem::play_best(State& state, std::vector<NetworkEvent>* events) {
  score(state);
  choose(state, 1);
  const Move move = chosen_[0].move;
  state.lock = move.lock;
  play(state, move.gate, events);
  return move.gate;
}

void NetworkProblem::serve_on(State& state, int q, std::vector<NetworkEvent>* events) {
  for (int label = 1; label <= 3; ++label) {
    const End end = end_of(q, label);
    list_.each_with(state.frame.key(end), [&](int row) {
      if (is_left(state, row) && state.frame.stands_for(end, list_.string(row))) {
        take_out(state, row, end, events);
      }
    });
  }
}

/// A rotation that is served may make way for others, also for those that come into the window.
void NetworkProblem::serve_in_order(State& state, std::vector<NetworkEvent>* events) {
  for (int before = -1; before != state.count_left;) {
    before = state.count_left;
    for (int place = 0; place < state.letters.count(); ++place) {
      const auto at = static_cast<std::size_t>(place);
      if (state.letters.weight(place) != 1 || !may_come(state, place)) continue;
      state.letters.letters(place, letters_.data());
      take_out(state, state.rows[at], single_letter(letters_[0]), events);
      const int slot = state.slots[at];
      for (const int other : state.slots) {
        this->before(state, other)[slot / word_bits] &= ~(Word{1} << (slot % word_bits));
      }
    }
    if (before != state.count_left) settle(state);
  }
}

void NetworkProblem::take_out(State& state, int row, End end, std::vector<NetworkEvent>* events) {
  state.left[static_cast<std::size_t>(row / word_bits)] &= ~(Word{1} << (row % word_bits));
  --state.count_left;
  state.served ^= id(row);
  state.lock = -1;
  if (events != nullptr) events->push_back({{end, end}, list_.number(row)});
}

bool NetworkProblem::may_come(const State& state, int place) const {
  if (!in_order_) return true;
  const Word* before =
      state.before.data() +
      static_cast<std::size_t>(state.slots[static_cast<std::size_t>(place)]) * slot_words_;
  return std::all_of(before, before + slot_words_, [](Word w) { return w == 0; });
}

/// Takes what was served out of the window and fills it up.
void NetworkProblem::settle(State& state) {
  std::size_t kept = 0;
  state.letters.keep_if([&](int place) {
    const auto at = static_cast<std::size_t>(place);
    if (!is_left(state, state.rows[at])) {
      if (in_order_) {
        const int slot = state.slots[at];
        state.free_slots[static_cast<std::size_t>(slot / word_bits)] |= Word{1}
                                                                        << (slot % word_bits);
      }
      return false;
    }
    state.rows[kept] = state.rows[at];
    if (in_order_) state.slots[kept] = state.slots[at];
    ++kept;
    return true;
  });
  state.rows.resize(kept);
  if (in_order_) state.slots.resize(kept);
  for (; state.next < list_.count() && !state.letters.full(); ++state.next) {
    if (is_left(state, state.next)) enter(state, state.next);
  }
  weigh(state);
}

/// What a string has become.
void NetworkProblem::append(LetterRows& rows, const Word* own, const LabelFrame& frame) {
  std::ranges::fill(string_, 0);
  for (int q = 0; q < list_.qubits(); ++q) {
    const auto w = static_cast<std::size_t>(q / word_bits);
    const int shift = q % word_bits;
    // The letter has an X where it anticommutes with Z, and the other way round.
    string_[w] |= Word{list_.clash(own, frame.of_z(q))} << shift;
    string_[w + static_cast<std::size_t>(list_.words())] |= Word{list_.clash(own, frame.of_x(q))}
                                                            << shift;
  }
  rows.append(string_.data());
}

void NetworkProblem::enter(State& state, int row) {
  const Word* own = list_.string(row);
  append(state.letters, own, state.frame);
  if (in_order_) {
    int slot = 0;
    while ((state.free_slots[static_cast<std::size_t>(slot / word_bits)] >> (slot % word_bits) &
            1) == 0) {
      ++slot;
    }
    state.free_slots[static_cast<std::size_t>(slot / word_bits)] &=
        ~(Word{1} << (slot % word_bits));
    Word* earlier = before(state, slot);
    std::fill(earlier, earlier + slot_words_, 0);
    for (std::size_t k = 0; k < state.rows.size(); ++k) {
      if (!list_.clash(own, list_.string(state.rows[k]))) continue;
      earlier[state.slots[k] / word_bits] |= Word{1} << (state.slots[k] % word_bits);
    }
    state.slots.push_back(slot);
  }
  state.rows.push_back(row);
}

void NetworkProblem::weigh(State& state) {
  state.factors.resize(state.rows.size());
  if (in_order_ && settings_.emphasis == Emphasis::by_chain) {
    weigh_by_chain(state);
  } else if (in_order_ && settings_.emphasis == Emphasis::by_predecessors) {
    for (std::size_t k = 0; k < state.rows.size(); ++k) {
      const Word* earlier = before(state, state.slots[k]);
      int count = 0;
      for (std::size_t w = 0; w < slot_words_; ++w) count += std::popcount(earlier[w]);
      state.factors[k] = by_rate_[static_cast<std::size_t>(count)];
    }
  } else {
    std::copy_n(by_place_.begin(), state.rows.size(), state.factors.begin());
  }
  for (std::size_t k = 0; k < state.rows.size() && !jitter_.empty(); ++k) {
    state.factors[k] = times(state.factors[k], jitter_[static_cast<std::size_t>(state.rows[k])]);
  }
}

/// Slots by the length of the longest chain of clashes that ends there.
void NetworkProblem::weigh_by_chain(State& state) {
  std::ranges::fill(chains_, 0);
  int longest = -1;
  for (std::size_t k = 0; k < state.rows.size(); ++k) {
    const int slot = state.slots[k];
    const Word* earlier = before(state, slot);
    int length = 0;
    for (int c = longest; c >= 0 && length == 0; --c) {
      const Word* chain = chains_.data() + static_cast<std::size_t>(c) * slot_words_;
      for (std::size_t w = 0; w < slot_words_; ++w) {
        if ((earlier[w] & chain[w]) != 0) length = c + 1;
      }
    }
    length = std::min(length, tuning.longest_chain);
    longest = std::max(longest, length);
    chains_[static_cast<std::size_t>(length) * slot_words_ +
            static_cast<std::size_t>(slot / word_bits)] |= Word{1} << (slot % word_bits);
    state.factors[k] = by_rate_[static_cast<std::size_t>(length)];
  }
}

std::int64_t NetworkProblem::score(const State& state) {
  if (on_graph_) return score_on_graph(state);
  pairs_.clear();
  std::int64_t sum = 0;
  for (int place = 0; place < state.letters.count(); ++place) {
    const int weight = state.letters.weight(place);
    const std::uint32_t factor = state.factors[static_cast<std::size_t>(place)];
    sum += static_cast<std::int64_t>(factor) * (costs_.of(weight) - usual_);
    const std::uint32_t less = times(factor, costs_.rise(weight));
    const std::uint32_t more = times(factor, costs_.rise(weight + 1));
    if (times(factor, costs_.steepest(weight)) < tuning.least_pull) continue;
    pairs_.add(letters_.data(), state.letters.letters(place, letters_.data()), less, more);
  }
  sum >>= NetworkCosts::factor_bits;
  for (int place = 0; place < state.images.count(); ++place) {
    const int weight = state.images.weight(place);
    sum += costs_.tail(weight);
    pairs_.add(letters_.data(), state.images.letters(place, letters_.data()),
               costs_.tail_rise(weight), costs_.tail_rise(weight + 1));
  }
  pairs_.score(gate_costs_);
  return usual_ * state.count_left + sum;
}

std::int64_t NetworkProblem::score_on_graph(const State& state) {
  constexpr std::int64_t unknown = std::numeric_limits<std::int64_t>::max();
  edges_.clear();
  std::int64_t sum = 0;
  for (int place = 0; place < state.letters.count(); ++place) {
    const std::uint32_t factor = state.factors[static_cast<std::size_t>(place)];
    const int now = reach(state, place);
    sum += static_cast<std::int64_t>(factor) * (costs_.of(now) - usual_);
    if (times(factor, costs_.steepest(now)) < tuning.least_pull) continue;
    // Rounded by itself, so that a change and the one back cancel out.
    const auto cost = [&](int reach) {
      return static_cast<std::int64_t>(factor) * costs_.of(reach) >> NetworkCosts::factor_bits;
    };
    changes_.assign(static_cast<std::size_t>(list_.qubits()), unknown);
    const auto change = [&](int q) {
      std::int64_t& found = changes_[static_cast<std::size_t>(q)];
      if (found == unknown) {
        found = cost(reach_with(state, place, q)) - cost(now);
      }
      return found;
    };
    for (std::size_t p = 0; p < gate_costs_.pairs().size(); ++p) {
      const auto [a, b] = gate_costs_.pairs()[p];
      const int on_a = state.letters.label(place, a);
      const int on_b = state.letters.label(place, b);
      if (on_a == 0 && on_b == 0) continue;
      const bool both = on_a != 0 && on_b != 0;
      edges_.add(static_cast<int>(p), on_a, on_b,
                 both        ? change(a)
                 : on_a != 0 ? change(b)
                             : 0,
                 both        ? change(b)
                 : on_b != 0 ? change(a)
                             : 0);
    }
  }
  edges_.score(gate_costs_);
  return usual_ * state.count_left + (sum >> NetworkCosts::factor_bits);
}

int NetworkProblem::reach(const State& state, int place) {
  if (!on_graph_) return state.letters.weight(place);
  state.letters.wires(place, string_.data());
  return reach_(string_.data());
}

int NetworkProblem::reach_with(const State& state, int place, int q) {
  state.letters.wires(place, string_.data());
  string_[static_cast<std::size_t>(q / word_bits)] ^= Word{1} << (q % word_bits);
  return reach_(string_.data());
}

int NetworkProblem::reach_of_nearest(const State& state) {
  int least = std::numeric_limits<int>::max();
  for (int place = 0; place < state.letters.count(); ++place) {
    if (!may_come(state, place)) continue;
    least = std::min(least, reach(state, place));
  }
  return least;
}

void NetworkProblem::choose(const State& state, int count) {
  chosen_.clear();
  if (state.lock >= 0) {
    const auto at = std::ranges::lower_bound(state.rows, state.lock) - state.rows.begin();
    choose_shortening(state, static_cast<int>(at), state.lock, count);
    return;
  }
  for (std::size_t p = 0; p < gate_costs_.pairs().size(); ++p) {
    const auto& costs = gate_costs_.of(static_cast<int>(p));
    for (std::size_t k = 0; k < costs.size(); ++k) {
      if (static_cast<int>(chosen_.size()) < count || costs[k] < chosen_.back().cost) {
        offer(GateCosts::gate(gate_costs_.pairs()[p], static_cast<int>(k)), -1, count);
      }
    }
  }
  if (!chosen_.empty() && chosen_[0].cost <= -least_gain) return;
  chosen_.clear();
  const int least = reach_of_nearest(state);
  for (int place = 0; place < state.letters.count(); ++place) {
    if (reach(state, place) != least || !may_come(state, place)) continue;
    choose_shortening(state, place, state.rows[static_cast<std::size_t>(place)], count);
    return;
  }
}

/// The gates that take a letter off a string: where one of two letters is the gate's and the other
/// is not.
void NetworkProblem::choose_shortening(const State& state, int place, int lock, int count) {
  if (on_graph_) return choose_on_graph(state, place, lock, count);
  const int weight = state.letters.letters(place, letters_.data());
  for (int i = 0; i < weight; ++i) {
    for (int j = i + 1; j < weight; ++j) {
      const End a = single_letter(letters_[static_cast<std::size_t>(i)]);
      const End b = single_letter(letters_[static_cast<std::size_t>(j)]);
      for (int other = 1; other <= 3; ++other) {
        if (other != label_of(a)) offer({end_of(wire_of(a), other), b}, lock, count);
        if (other != label_of(b)) offer({a, end_of(wire_of(b), other)}, lock, count);
      }
    }
  }
}

/// The gates on edges that bring a string nearer to a single letter, by a letter more or less.
void NetworkProblem::choose_on_graph(const State& state, int place, int lock, int count) {
  const int now = reach(state, place);
  for (const auto [a, b] : gate_costs_.pairs()) {
    const int on_a = state.letters.label(place, a);
    const int on_b = state.letters.label(place, b);
    if (on_a == 0 && on_b == 0) continue;
    const auto offer_all = [&](bool changes_a, bool changes_b) {
      for (int k = 0; k < 9; ++k) {
        const Gate gate = GateCosts::gate({a, b}, k);
        const bool at_a = on_b != 0 && on_b != label_of(gate.b);
        const bool at_b = on_a != 0 && on_a != label_of(gate.a);
        if (at_a == changes_a && at_b == changes_b &&
            (!changes_a || on_a == 0 || on_a == label_of(gate.a)) &&
            (!changes_b || on_b == 0 || on_b == label_of(gate.b))) {
          offer(gate, lock, count);
        }
      }
    };
    if (on_b != 0 && reach_with(state, place, a) < now) offer_all(true, false);
    if (on_a != 0 && reach_with(state, place, b) < now) offer_all(false, true);
  }
}

void NetworkProblem::offer(const Gate& gate, int lock, int count) {
  const std::int64_t cost = gate_costs_.of(gate);
  const auto same = [&](const Choice& choice) { return choice.move.gate == gate; };
  if (std::ranges::any_of(chosen_, same)) return;
  const auto place = std::ranges::upper_bound(chosen_, cost, {}, &Choice::cost);
  if (place == chosen_.end() && static_cast<int>(chosen_.size()) >= count) return;
  chosen_.insert(place, {cost, {gate, lock}});
  if (static_cast<int>(chosen_.size()) > count) chosen_.pop_back();
}

/// Of the frame and of what has been served behind the gate.
std::uint64_t NetworkProblem::hash(const State& state, const Move& move) const {
  std::uint64_t served = state.served;
  const auto look = [&](End changed, End by) {
    for (int label = 1; label <= 3; ++label) {
      if (label == label_of(changed)) continue;
      const std::uint64_t key =
          state.frame.key(end_of(wire_of(changed), label)) ^ state.frame.key(by);
      list_.each_with(key, [&](int row) {
        if (!is_left(state, row)) return;
        if (in_order_) {
          const auto at = std::ranges::lower_bound(state.rows, row) - state.rows.begin();
          if (at == std::ssize(state.rows) || state.rows[static_cast<std::size_t>(at)] != row ||
              !may_come(state, static_cast<int>(at))) {
            return;
          }
        }
        served ^= id(row);
      });
    }
  };
  look(move.gate.a, move.gate.b);
  look(move.gate.b, move.gate.a);
  return state.frame.hash_behind(move.gate) ^ Rng::mixed(served);
}

}  // namespace zelt::braidwerk::internal
