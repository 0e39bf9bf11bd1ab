#include "zeltbraidwerk/pauli/search/internal/network_problem.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/pauli/search/internal/tuning.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr const NetworkWindowTuning& tuning = network_window_tuning;

double emphasis_at(const NetworkSettings& settings, int place) {
  return settings.emphasis == Emphasis::by_place ? std::pow(1 + place / settings.rate, -2.0) : 1;
}

int window_size(const NetworkSettings& settings, bool in_order, int count) {
  int size = std::min(count, in_order ? tuning.rows_in_order : tuning.most_rows);
  if (!in_order && settings.emphasis == Emphasis::by_place) {
    const double least = settings.narrow ? tuning.least_emphasis_if_narrow : tuning.least_emphasis;
    const double places = settings.rate * (std::pow(least, -0.5) - 1);
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

}  // namespace

NetworkProblem::NetworkProblem(const RotationList& list, bool in_order,
                               const NetworkSettings& settings, const BitGraph* graph, Rng& rng,
                               const CliffordTarget* target)
    : list_(list),
      in_order_(in_order),
      settings_(settings),
      costs_(settings, graph == nullptr ? list.qubits() : 3 * list.qubits()),
      gate_costs_(list.qubits(), graph),
      pairs_(graph == nullptr ? list.qubits() : 0),
      edges_(gate_costs_),
      reach_(graph == nullptr ? Reach() : Reach(*graph)),
      target_(target),
      on_graph_(graph != nullptr),
      capacity_(window_size(settings, in_order, list.count())),
      slot_words_(static_cast<std::size_t>(words_for(capacity_))) {
  const int n = list.qubits();
  const int usual =
      static_cast<int>(std::lround(std::max(mean_weight(list), tuning.usual_letters * n)));
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
  pulls_.resize(static_cast<std::size_t>(n) + 1);
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
  stop_point();
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
    stop_point();
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

/// Of the frame and of what has been served after the gate.
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
  return state.frame.hash_after(move.gate) ^ Rng::mixed(served);
}

}  // namespace zelt::braidwerk::internal
