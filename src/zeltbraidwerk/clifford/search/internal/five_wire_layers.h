#pragma once

#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/class_table.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

using FiveWireRows = FewWireRows<5>;

/// Of the circuits of the fewest gates for an operator on five qubits, one of few layers.
///
/// Depth first, layer by layer: a gate can begin such a circuit when it takes one off the distance,
/// and two gates on other wires when they take two off. Two gates at once are tried first, and no
/// more single ones than the layers have room for. Which single gates lead from nine gates to eight
/// ClassTable does not tell: those that two at once are made of do, and the others are found by the
/// gates after them, when those do not lead down in so few layers. Of operators that take ten some
/// gates to begin with are looked at.
class FiveWireLayers {
 public:
  explicit FiveWireLayers(Rng& rng) : rng_(rng) {}

  /// Gates that bring an operator at this distance, up to `most_gates`, down to none, in at most
  /// that number of layers; `rows` becomes what is left. False, after a number of tries, where
  /// there are none or none was found.
  bool go_down(FiveWireRows& rows, int distance, int layers, std::vector<Gate>& gates);

  static constexpr int most_gates = ClassTable<5>::most_gates + 3;

 private:
  struct Move {
    int first;
    int second;  ///< -1: none
    FiveWireRows rows;
  };
  struct Known {
    FiveWireRows rows;
    std::vector<Move> moves;
    bool has_all = false;
  };

  std::vector<Move> moves(const FiveWireRows& rows, int distance);
  std::vector<Move> moves_of_nine(const FiveWireRows& rows);
  std::vector<Move> moves_of_ten(const FiveWireRows& rows);
  Known& known_of(int distance, const FiveWireRows& rows);
  void add_single_moves(Known& known);
  bool takes_eight(const FiveWireRows& rows);
  template <class F>
  void each_two(const FiveWireRows& rows, F&& visit);
  int distance_after(int move, const FiveWireRows& rows, FiveWireRows& next);
  bool go_down(const FiveWireRows& rows, const OperatorClass& of, int distance, int layers);

  const ClassTable<5>& table_ = ClassTable<5>::shared();
  Rng& rng_;
  ClassFinder<5> class_of_;
  int tries_left_ = 0;
  std::vector<int> path_;
  FiveWireRows left_;
  std::array<Known, 2> known_;  ///< the last operators that took nine gates, and ten
  /// Layers that were not enough.
  std::unordered_map<OperatorClass, int, OperatorClass::Hash> not_enough_;
};

}  // namespace zelt::braidwerk::internal
