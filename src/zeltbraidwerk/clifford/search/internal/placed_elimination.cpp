#include "zeltbraidwerk/clifford/search/internal/placed_elimination.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace zelt::braidwerk::internal {
namespace {

/// One of the members of a set that is not empty.
int random_member(Word set, Rng& rng) {
  for (int k = rng.below(std::popcount(set)); k > 0; --k) set &= set - 1;
  return std::countr_zero(set);
}

}  // namespace

/// Of gates so far and of some of those that each generator takes alone.
double PlacedElimination::price(const State& state) {
  int left = 0;
  for (int k = 0; k < state.group.generators(); ++k) left += state.group.weight(k) - 1;
  return static_cast<double>(state.gates.size()) + placed_state_tuning.weight_left * left;
}

/// From the root to every letter, each time along a random shortest way to one of the nearest.
void PlacedElimination::grow_tree(Word support, int root, Word open, Rng& rng) {
  tree_.assign(1, {root, -1});
  Word met = Word{1} << root;
  static thread_local std::vector<Word> layers;
  while ((support & ~met) != 0) {
    layers.assign(1, met);
    Word seen = met;
    while ((layers.back() & support & ~met) == 0) {
      const Word next = weights_.near_any(layers.back()) & open & ~seen;
      if (next == 0) return;  // not connected
      seen |= next;
      layers.push_back(next);
    }
    const std::size_t first = tree_.size();
    int wire = random_member(layers.back() & support & ~met, rng);
    for (std::size_t k = layers.size() - 1; k > 0; --k) {
      const int before = random_member(weights_.near(wire) & layers[k - 1], rng);
      tree_.emplace_back(wire, before);
      met |= Word{1} << wire;
      wire = before;
    }
    std::reverse(tree_.begin() + static_cast<std::ptrdiff_t>(first), tree_.end());
  }
}

void PlacedElimination::advance(State& state, const Move& move) {
  Rng rng(move.seed, 0);
  WireString string = state.group.element(move.generator);
  grow_tree(string.support(), move.wire, state.open, rng);
  const auto other = [&](int than) { return 1 + (than + rng.below(2)) % 3; };
  const auto apply = [&](End a, End b) {
    state.gates.push_back(wire_of(a) < wire_of(b) ? Gate{a, b} : Gate{b, a});
    string = string.after(state.gates.back());
    state.group.carry(state.gates.back());
  };
  for (std::size_t k = tree_.size(); k-- > 1;) {
    const auto [wire, into] = tree_[k];
    if (string.label(into) == 0) {
      apply(end_of(into, 1 + rng.below(3)), end_of(wire, other(string.label(wire))));
    }
    apply(end_of(into, other(string.label(into))), end_of(wire, string.label(wire)));
  }
  state.letters.push_back(end_of(move.wire, string.label(move.wire)));
  state.open &= ~(Word{1} << move.wire);
  state.group.finish(move.generator, weights_);
}

}  // namespace zelt::braidwerk::internal
