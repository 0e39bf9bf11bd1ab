#pragma once

#include <cstdint>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/cost.h"
#include "zeltbraidwerk/clifford/search/internal/operator_rows.h"
#include "zeltbraidwerk/search/internal/beam.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// An operator brought down to one-qubit gates by gates after and before it: a problem of a beam.
///
/// What a gate does to the rows of its own two wires is priced exactly. On the other side it
/// changes two letters in many rows; there every letter has the mean of what one more and one less
/// would cost, which is a sum over the bits of the same rows.
class OperatorReduction {
 public:
  struct State {
    OperatorRows rows;
    double cost = 0;
  };
  struct Move {
    int side;
    Gate gate;
  };

  OperatorReduction(int wires, const OperatorCost& cost);

  State start(OperatorRows rows) const;
  template <class Sink>
  void children(const State& state, Rng&, Sink&& sink) {
    for (int side = 0; side < 2; ++side) children_on(side, state, {}, sink);
  }
  /// Those on one side and on no wire that is `taken`; empty: none is.
  template <class Sink>
  void children_on(int side, const State& state, const std::vector<char>& taken, Sink&& sink) {
    price(state.rows, side, taken);
    for (const Child& child : children_) {
      sink(state.cost + static_cast<double>(child.change), Move{side, child.gate});
    }
  }
  std::uint64_t hash(const State& state, const Move& move);
  void make(State& state, const Move& move) const;
  bool done(const State& state) const { return state.rows.is_local(); }

  /// What one letter changes in a row of a random operator.
  double small_change() const;

 private:
  struct Child {
    float change;
    Gate gate;
  };

  double value(int weight) const { return value_[static_cast<std::size_t>(weight)]; }
  double cost_of(const OperatorRows& rows) const;
  void price(const OperatorRows& rows, int side, const std::vector<char>& taken);
  void price_letters(const OperatorRows& rows, int side);
  void choose_wires(const OperatorRows& rows, int side);

  int wires_;
  OperatorCost cost_;
  std::vector<double> value_;   ///< by weight
  std::vector<float> letters_;  ///< sums of prices of letters on the other side, by bytes of rows
  std::vector<bool> tried_;     ///< wires on which gates are tried
  std::vector<Child> children_;
  OperatorRows scratch_;
};

/// The circuit of an operator of which the moves have left one-qubit gates and a renaming.
GateList circuit_of(const OperatorRows& left, const std::vector<OperatorReduction::Move>& moves);
/// The same where it is known what is left: the ends that it turns into those of the outputs.
GateList circuit_of(const WireFrame& left, const std::vector<OperatorReduction::Move>& moves);

}  // namespace zelt::braidwerk::internal
