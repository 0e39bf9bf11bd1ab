#pragma once

#include <cstdint>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/operator_rows.h"
#include "zeltbraidwerk/clifford/search/internal/reduction.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// An operator brought down to one-qubit gates by gates on the edges of a connected graph, wire by
/// wire: a problem of a beam. A wire is cleared along Steiner trees, through rows of one side or
/// the other, when the wires that are left are connected without it.
class DeviceElimination {
 public:
  struct State {
    OperatorRows rows;
    VertexSet left;
    int wires_left = 0;
    std::vector<OperatorReduction::Move> gates;
  };
  struct Move {
    int wire;
    int side;   ///< of the rows that are brought down to the wire
    int label;  ///< the one that is brought down first
    std::uint64_t seed;
  };

  explicit DeviceElimination(const BitGraph& graph);

  State start(OperatorRows rows) const;
  template <class Sink>
  void children(const State& state, Rng& rng, Sink&& sink) {
    const VertexSet wires = non_cutting(graph_, state.left);
    int count = 0;
    wires.for_each([&](int) { ++count; });
    wires.for_each([&](int wire) {
      if (rng.below(count) >= clifford_tuning.tried_on_device) return;
      for (int side = 0; side < 2; ++side) {
        for (int label = 1; label < 4; ++label) {
          stop_point();
          const Move move{wire, side, label, rng.next()};
          child_ = state;
          make(child_, move);
          sink(price(child_), move);
        }
      }
    });
  }
  std::uint64_t hash(const State& state, const Move& move);
  void make(State& state, const Move& move);
  bool done(const State& state) const { return state.wires_left < 2; }

 private:
  double price(const State& state) const;
  void bring_down(State& state, const Move& move, int label, int kept, Rng& rng);
  void grow_tree(const State& state, const Move& move, int label, Rng& rng);
  void apply(State& state, int side, End a, End b) const;
  int distance(int a, int b) const {
    return distances_[static_cast<std::size_t>(a) * static_cast<std::size_t>(graph_.size()) +
                      static_cast<std::size_t>(b)];
  }

  const BitGraph& graph_;
  std::vector<int> distances_;
  std::vector<int> parent_;  // in the tree, by wire
  std::vector<int> tree_;    // wires in the order in which the tree took them, the root first
  State child_;
};

}  // namespace zelt::braidwerk::internal
