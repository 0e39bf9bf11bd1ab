#pragma once

#include <cstddef>
#include <set>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/linear/search/internal/gate_order.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// The vectors that the ends of some wires pass by, for other wires to receive.
///
/// An end holds a vector: the parity on a wire, or what a Pauli letter there amounts to. A gate
/// adds the vectors of both its ends to what the other labels of both wires hold. Only gates that
/// do not commute have an order, so there are more vectors than in any one line of gates. Each that
/// is received settles some of what is before what, and others cannot be had any more.
class PassingVectors {
 public:
  /// On so many wires, of so many dimensions.
  PassingVectors(int wires, int dimensions);

  /// What an end holds at first; it is the next of the vectors. Ends that hold none add nothing.
  void hold(End end, const Word* vector);
  /// A gate after all those that it does not commute with.
  void play(const Gate& gate);
  /// What an end holds between the gates on its wire, in some random orders of these.
  void pass_on(End end, Rng& rng);
  /// What all ends that hold something do.
  void pass_all_on(Rng& rng);
  /// Gates between `by` and the ends that hold some of the vectors, which can be had together.
  void receive(End by, const std::vector<int>& vectors);

  /// Of all, also those that cannot be had any more.
  int count() const { return static_cast<int>(states_.size()); }
  const Word* vector(int k) const { return vectors_.data() + k * words_; }
  /// Whether all these can still be received by one wire.
  bool can_be_had(const std::vector<int>& vectors) const;
  /// Those that cannot be had any more, told once.
  std::vector<int> lost();

  std::vector<Gate> circuit() const { return order_.line(); }

 private:
  static constexpr int none = -1;

  /// An end after some of the gates that change what it holds.
  struct State {
    End end;
    std::vector<int> gates;  // ascending
    bool is_possible = true;
  };
  struct Numbered {
    int number;
    End end;
  };

  /// In one of the orders, while there are fewer than so many vectors.
  void pass_once(End end, int most, Rng& rng);
  /// Gates on a wire by another label, which change what the end holds.
  std::vector<int> changing(End end) const;
  void add(End end, const std::vector<int>& gates, const Word* vector);
  GateOrder::Place place_of(const State& state) const;
  bool is_possible(const State& state) const;

  std::ptrdiff_t words_;
  int possible_ = 0;
  std::vector<int> first_;                          // by end: the number of what it holds at first
  std::vector<std::set<std::vector<int>>> passed_;  // by end: the gates of its states
  std::vector<std::vector<Numbered>> on_wire_;
  std::vector<State> states_;
  std::vector<Word> vectors_;  // of the states, one after the other
  GateOrder order_;
  std::vector<Word> added_;  // by gate
};

}  // namespace zelt::braidwerk::internal
