#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/window_moves.h"
#include "zeltbraidwerk/pauli/search/internal/block_bounds.h"
#include "zeltbraidwerk/pauli/search/internal/network_problem.h"
#include "zeltbraidwerk/pauli/search/internal/vain_searches.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// A piece of a network on three wires: other gates that serve the same rotations and leave the
/// same operator after them, found by going through all sequences of gates up to a length that
/// are of use at every step, in a random order, until one is found or enough were looked at.
///
/// Searches that end in vain are remembered, from their beginning and from every place on the way,
/// and left out when they come up again: what is found stays the same, draws and patience included.
/// Of two states that lead to the same answers the operators are equal, and so are the rotations
/// left by their hashes: of the strings at the beginning and of all that must come before.
///
/// Operators are bytes, the label of wire q in bits 2 q and 2 q + 1, and so are the strings of the
/// rotations. Each of these takes some gates at least, together with the operator: see BlockBounds.
class NetworkBlock {
 public:
  static constexpr int wires = 3;
  static constexpr int moves = moves_on(wires);
  static constexpr int most_rotations = 16;

  using WireOrder = std::array<std::uint8_t, wires>;
  struct Exchange {
    int a;
    int b;
  };

  explicit NetworkBlock(bool in_order) : in_order_(in_order) {}

  /// False where there is too much in the block. Wires are places 0 to 2; where the end is free,
  /// anything may be left after it. `order` has the places' ranks in an order of the wires by which
  /// a block is known again whatever their places. After the block that is searched for, the two
  /// places of `exchanged` have changed roles; none have where they are the same.
  bool read(const std::vector<NetworkEvent>& events, bool end_is_free,
            const WireOrder& order = {0, 1, 2}, Exchange exchanged = {0, 0});
  int gates() const { return gates_; }
  /// No fewer gates will do.
  int least() const;

  /// Finds at most `most_gates` gates, between the pairs of wires whose bits b (b - 1) / 2 + a are
  /// set, looking at `patience` pieces of sequences. On success events() is another block, and
  /// ends() tells where the labels of the old one stand after it.
  bool rewrite(int most_gates, unsigned pairs, int patience, Rng& rng);
  const std::vector<NetworkEvent>& events() const { return found_; }
  /// By end: of the old block, of the new one. Labels of one wire stay together on one wire.
  const std::array<End, 4 * wires>& ends() const { return ends_; }
  /// Whether any label stands elsewhere.
  bool renames() const { return renames_; }

 private:
  using Rows = std::uint16_t;  // one bit per rotation
  static_assert(most_rotations <= 16);
  using Number = BlockBounds::Number;
  struct State {
    std::uint64_t operators;  // what X and Z on the wires, after the block, are here
    std::uint64_t hash;       // of the rotations left
    Number number;            // of the operator
    Rows left;                // rotations
    std::array<std::uint8_t, most_rotations> strings;
  };
  struct MovesOnWires;

  void serve(State& state);
  bool descend(const State& state, int budget);
  void name_ends(const State& state);
  static const MovesOnWires& on_wires(const WireOrder& order);
  unsigned moves_between(unsigned pairs) const;
  int turn_of(int number) const;
  int given_at(int turn) const;
  std::uint64_t with_least_labels(std::uint64_t operators);
  End on_wire(End end) const {
    return end_of(wire_[static_cast<std::size_t>(wire_of(end))], label_of(end));
  }
  End at_place(End end) const {
    return end_of(place_[static_cast<std::size_t>(wire_of(end))], label_of(end));
  }

  bool in_order_;
  bool end_is_free_ = false;
  Exchange exchanged_{};
  int gates_ = 0;
  int rotations_ = 0;
  State start_{};
  std::array<int, most_rotations> rows_{};
  std::array<Rows, most_rotations> before_{};  // rotations that must come first
  std::vector<NetworkEvent> found_;
  std::array<End, 4 * wires> ends_{};
  bool renames_ = false;
  int patience_ = 0;
  WireOrder wire_{};   // by place
  WireOrder place_{};  // by wire
  std::array<std::uint64_t, most_rotations> hash_{};
  std::array<End, 4 * wires> named_{};  // labels after the old block, as with_least_labels
  const MovesOnWires* on_wires_ = nullptr;
  unsigned allowed_ = 0;    // moves
  int first_ = 0;           // of the moves in turn
  std::size_t stride_ = 0;  // its number
  VainSearches vain_;
};

}  // namespace zelt::braidwerk::internal
