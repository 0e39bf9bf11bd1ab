#pragma once

#include <bit>
#include <cstdint>
#include <utility>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/placed_group.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/search/internal/beam.h"

namespace zelt::braidwerk::internal {

/// A state taken apart wire by wire, for the beam: a generator is brought down to one letter along
/// a tree of edges, on a wire without which the others are connected. It always comes to an end,
/// after as many levels as there are wires.
class PlacedElimination {
 public:
  struct State {
    PlacedGroup group;  ///< on the wires that are left
    Word open = 0;      ///< these
    std::vector<Gate> gates;
    std::vector<End> letters;  ///< what is left of the state on the other wires
  };
  struct Move {
    int wire;
    int generator;
    std::uint64_t seed;
    std::uint64_t hash;
  };

  PlacedElimination(SupportWeights& weights, Rng& rng) : weights_(weights), rng_(rng) {}

  State start(PlacedGroup group) const {
    const int n = weights_.wires();
    return {std::move(group), n == 64 ? ~Word{0} : (Word{1} << n) - 1, {}, {}};
  }

  template <class Sink>
  void children(const State& state, Rng& rng, Sink&& sink) {
    for (Word rest = state.open; rest != 0; rest &= rest - 1) {
      const int wire = std::countr_zero(rest);
      if (!weights_.is_connected(state.open & ~(rest & -rest))) continue;
      int tried = 0;
      for (int k = 0; k < state.group.generators() && tried < placed_state_tuning.tried; ++k) {
        if (state.group.element(k).label(wire) == 0) continue;
        ++tried;
        stop_point();
        Move move{wire, k, rng.next(), 0};
        child_ = state;
        advance(child_, move);
        move.hash = child_.group.hash() + Rng::mixed(child_.open);
        sink(price(child_), move);
      }
    }
  }
  static std::uint64_t hash(const State&, const Move& move) { return move.hash; }
  void make(State& state, const Move& move) {
    advance(state, move);
    state.group.lighten(placed_state_tuning.sets, rng_, weights_);
  }
  static bool done(const State& state) { return state.open == 0; }

 private:
  static double price(const State& state);
  void advance(State& state, const Move& move);
  void grow_tree(Word support, int root, Word open, Rng& rng);

  SupportWeights& weights_;
  Rng& rng_;
  State child_;
  std::vector<std::pair<int, int>> tree_;  // wire and the one that it hangs on, the root first
};

}  // namespace zelt::braidwerk::internal
