#include <algorithm>
#include <limits>

#include "zeltbraidwerk/pauli/search/internal/network_problem.h"
#include "zeltbraidwerk/pauli/search/internal/tuning.h"

/// \file
/// The moves from a network's state: what each gate costs, and the few that a search looks at.

namespace zelt::braidwerk::internal {
namespace {

constexpr const NetworkWindowTuning& tuning = network_window_tuning;
constexpr std::int64_t least_gain =
    (std::int64_t{1} << NetworkCosts::unit_bits) / network_window_tuning.least_gain;

}  // namespace

std::int64_t NetworkProblem::score(const State& state) {
  if (on_graph_) return score_on_graph(state);
  pairs_.clear();
  std::int64_t sum = 0;
  for (int place = 0; place < state.letters.count(); ++place) {
    const int weight = state.letters.weight(place);
    const std::uint32_t factor = state.factors[static_cast<std::size_t>(place)];
    sum += static_cast<std::int64_t>(factor) * (costs_.of(weight) - usual_);
    const std::uint32_t less = NetworkCosts::times(factor, costs_.rise(weight));
    const std::uint32_t more = NetworkCosts::times(factor, costs_.rise(weight + 1));
    if (NetworkCosts::times(factor, costs_.steepest(weight)) < tuning.least_pull) continue;
    pulls_[static_cast<std::size_t>(weight)].push_back({place, less, more});
  }
  for (std::size_t weight = 0; weight < pulls_.size(); ++weight) {
    pairs_.add(state.letters, static_cast<int>(weight), pulls_[weight]);
    pulls_[weight].clear();
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
    if (NetworkCosts::times(factor, costs_.steepest(now)) < tuning.least_pull) continue;
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
  const auto is_offered = [&](std::int64_t cost) {
    return static_cast<int>(chosen_.size()) < count || cost < chosen_.back().cost;
  };
  for (const GateCosts::Pair& pair : gate_costs_.pairs()) {
    if (!is_offered(gate_costs_.least(pair))) continue;
    for (int k = 0; k < 9; ++k) {
      if (is_offered(gate_costs_.of(pair, k))) offer(GateCosts::gate(pair, k), -1, count);
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

}  // namespace zelt::braidwerk::internal
