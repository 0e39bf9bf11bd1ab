#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/operator_rows.h"

namespace zelt::braidwerk::internal {

/// A Clifford operator on five qubits, signs left out, by its rows, as WindowRows has those of
/// fewer: string 2 i + k is the Pauli operator that it turns into X (k = 0) or Z (k = 1) on wire i.
/// The label of wire q is in bits 2 q and 2 q + 1, and products are XORs.
struct FiveWireRows {
  static constexpr int wires = 5;
  std::array<std::uint16_t, 2 * wires> strings{};

  static FiveWireRows identity();
  static FiveWireRows of(const OperatorRows& rows);

  /// Output places[p] on wire p.
  FiveWireRows reordered(const std::array<int, wires>& places) const;
  bool operator==(const FiveWireRows&) const = default;
};

/// The gates on two of the five wires, nine for each pair.
inline constexpr int five_wire_moves = 90;
const std::array<Gate, five_wire_moves>& five_wire_gates();

/// The rows of the operator with a gate put before it.
FiveWireRows rows_after(const Gate& gate, FiveWireRows rows);

/// What two operators on five qubits have in common when they differ by one-qubit gates before and
/// after them and by names of the wires. Gates on two wires are as many for all of a class, with
/// every output in its place. There are about 3.4 million classes.
struct OperatorClass {
  std::uint64_t low = 0;
  std::uint16_t high = 0;
  bool operator==(const OperatorClass&) const = default;

  struct Hash {
    std::size_t operator()(const OperatorClass& of) const {
      return of.low ^ of.low >> 29 ^ of.high;
    }
  };
};

/// Finds classes, in about a microsecond each. Keeps its memory from one to the next.
///
/// An operator is a matrix of blocks, 2 by 2 over GF(2), by the wire of the row and of the column.
/// One-qubit gates after the operator multiply the blocks of a row from the left by one matrix, as
/// gates before it do from the right with those of a column. Wires are put in order of numbers that
/// none of this changes: ranks of blocks, and how often blocks of rank 1 have the same image. Then
/// the class is the least matrix that one-qubit gates make, compared row by row; where wires have
/// equal numbers, the least over their orders.
///
/// Four rows say it all: the fifth wire has what commutes with them.
class ClassFinder {
 public:
  OperatorClass operator()(const FiveWireRows& rows);

 private:
  static constexpr int wires = FiveWireRows::wires;
  using Block = std::uint8_t;
  using Order = std::array<int, wires>;
  /// For each column, in a byte, the one-qubit gates that lead to the least rows so far.
  using Gates = std::uint64_t;

  void read(const FiveWireRows& rows);
  std::array<std::uint64_t, wires> wire_numbers() const;
  void try_orders(const std::array<std::uint64_t, wires>& numbers, int from, Order& order);
  void try_order(const Order& order);
  bool add_row(const Order& order, std::size_t k);

  Block block(int i, int j) const {
    return blocks_[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
  }

  std::array<std::array<Block, wires>, wires> blocks_{};
  std::array<std::uint32_t, wires - 1> least_{};
  std::vector<Gates> ways_;
  std::vector<Gates> next_ways_;
};

}  // namespace zelt::braidwerk::internal
