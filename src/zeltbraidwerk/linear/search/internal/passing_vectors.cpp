#include "zeltbraidwerk/linear/search/internal/passing_vectors.h"

#include <algorithm>
#include <iterator>

#include "zeltbraidwerk/linear/search/internal/tuning.h"

namespace zelt::braidwerk::internal {
namespace {

void add_to(std::vector<Word>& sum, const Word* vector) {
  for (std::size_t w = 0; w < sum.size(); ++w) sum[w] ^= vector[w];
}

}  // namespace

PassingVectors::PassingVectors(int wires, int dimensions)
    : words_(words_for(dimensions)),
      first_(4 * static_cast<std::size_t>(wires), none),
      passed_(first_.size()),
      on_wire_(static_cast<std::size_t>(wires)) {}

void PassingVectors::hold(End end, const Word* vector) {
  first_[end] = count();
  add(end, {}, vector);
}

void PassingVectors::play(const Gate& gate) {
  std::vector<Word> added(static_cast<std::size_t>(words_));
  GateOrder::Place place;
  for (const End end : {gate.a, gate.b}) {
    const std::vector<int> before = changing(end);
    place.after.insert(place.after.end(), before.begin(), before.end());
    if (first_[end] == none) continue;
    add_to(added, vector(first_[end]));
    for (const int g : before) add_to(added, added_.data() + g * words_);
  }
  const int number = order_.put(gate, place);
  added_.insert(added_.end(), added.begin(), added.end());
  for (const End end : {gate.a, gate.b}) {
    on_wire_[static_cast<std::size_t>(wire_of(end))].push_back({number, end});
  }
}

void PassingVectors::pass_on(End end, Rng& rng) {
  for (int k = 0; k < elimination_tuning.orders; ++k)
    pass_once(end, elimination_tuning.most_vectors, rng);
}

void PassingVectors::pass_all_on(Rng& rng) {
  for (int k = 0; k < elimination_tuning.orders; ++k) {
    for (std::size_t end = 0; end < first_.size(); ++end) {
      if (first_[end] == none) continue;
      pass_once(static_cast<End>(end), elimination_tuning.most_of_block, rng);
    }
  }
}

void PassingVectors::pass_once(End end, int most, Rng& rng) {
  std::vector<int> left = changing(end);
  std::vector<int> done;
  std::vector<Word> held(vector(first_[end]), vector(first_[end]) + words_);
  while (!left.empty() && possible_ < most) {
    std::vector<int> next;
    std::ranges::copy_if(left, std::back_inserter(next), [&](int gate) {
      return std::ranges::none_of(left, [&](int g) { return order_.is_before(g, gate); });
    });
    const int gate = next[static_cast<std::size_t>(rng.below(static_cast<int>(next.size())))];
    std::erase(left, gate);
    done.insert(std::ranges::upper_bound(done, gate), gate);
    add_to(held, added_.data() + gate * words_);
    const bool is_zero = std::ranges::count(held, Word{0}) == words_;
    if (!is_zero && passed_[end].insert(done).second) add(end, done, held.data());
  }
}

void PassingVectors::receive(End by, const std::vector<int>& vectors) {
  for (const int k : vectors) {
    const State& state = states_[static_cast<std::size_t>(k)];
    const int gate = order_.put({state.end, by}, place_of(state));
    added_.insert(added_.end(), vector(k), vector(k) + words_);
    on_wire_[static_cast<std::size_t>(wire_of(by))].push_back({gate, by});
  }
}

bool PassingVectors::can_be_had(const std::vector<int>& vectors) const {
  std::vector<GateOrder::Place> places;
  for (const int k : vectors) {
    const State& state = states_[static_cast<std::size_t>(k)];
    if (!state.is_possible) return false;
    places.push_back(place_of(state));
  }
  return places.size() <= word_bits && order_.have_room(places);
}

std::vector<int> PassingVectors::lost() {
  std::vector<int> lost;
  for (int k = 0; k < count(); ++k) {
    State& state = states_[static_cast<std::size_t>(k)];
    if (!state.is_possible || is_possible(state)) continue;
    state.is_possible = false;
    --possible_;
    lost.push_back(k);
  }
  return lost;
}

std::vector<int> PassingVectors::changing(End end) const {
  std::vector<int> gates;
  for (const Numbered& gate : on_wire_[static_cast<std::size_t>(wire_of(end))]) {
    if (gate.end != end) gates.push_back(gate.number);
  }
  return gates;
}

void PassingVectors::add(End end, const std::vector<int>& gates, const Word* vector) {
  states_.push_back({end, gates});
  vectors_.insert(vectors_.end(), vector, vector + words_);
  ++possible_;
}

GateOrder::Place PassingVectors::place_of(const State& state) const {
  GateOrder::Place place{state.gates, {}};
  std::ranges::set_difference(changing(state.end), state.gates, std::back_inserter(place.before));
  return place;
}

/// None of the gates after it is before one of those before it.
bool PassingVectors::is_possible(const State& state) const {
  const std::vector<int> after = place_of(state).before;
  return std::ranges::none_of(after, [&](int other) {
    return std::ranges::any_of(state.gates,
                               [&](int gate) { return order_.is_before(other, gate); });
  });
}

}  // namespace zelt::braidwerk::internal
