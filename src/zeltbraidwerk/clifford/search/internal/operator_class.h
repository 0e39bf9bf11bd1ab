#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/operator_rows.h"

namespace zelt::braidwerk::internal {

/// A Clifford operator on up to six qubits, signs left out, by its rows, as WindowRows has those of
/// fewer: string 2 i + k is the Pauli operator that it turns into X (k = 0) or Z (k = 1) on wire i.
/// The label of wire q is in bits 2 q and 2 q + 1, and products are XORs.
template <int wires>
struct FewWireRows {
  static_assert(2 <= wires && wires <= 6);
  /// The gates on two of the wires, nine for each pair.
  static constexpr int moves = 9 * wires * (wires - 1) / 2;
  std::array<std::uint16_t, 2 * wires> strings{};

  static FewWireRows identity();
  static FewWireRows of(const OperatorRows& rows);
  static const std::array<Gate, moves>& gates();

  /// The operator with a gate put before it.
  FewWireRows after(const Gate& gate) const {
    FewWireRows rows = *this;
    const auto pauli = static_cast<unsigned>(label_of(gate.a) << (2 * wire_of(gate.a)) |
                                             label_of(gate.b) << (2 * wire_of(gate.b)));
    const unsigned swapped = (pauli & 0x555U) << 1 | (pauli & 0xaaaU) >> 1;
    for (std::uint16_t& string : rows.strings) {
      const bool anticommutes = (std::popcount(string & swapped) & 1) != 0;
      string = static_cast<std::uint16_t>(string ^ (anticommutes ? pauli : 0));
    }
    return rows;
  }
  /// Output places[p] on wire p.
  FewWireRows reordered(const std::array<int, wires>& places) const;
  bool operator==(const FewWireRows&) const = default;
};

/// What two operators have in common when they differ by one-qubit gates before and after them and
/// by names of the wires. Gates on two wires are as many for all of a class, with every output in
/// its place. There are about 3.4 million classes on five wires, and 1.3 * 10^11 on six.
struct OperatorClass {
  std::uint64_t low = 0;
  std::uint64_t high = 0;  ///< up to 56 bits
  bool operator==(const OperatorClass&) const = default;

  struct Hash {
    std::size_t operator()(const OperatorClass& of) const {
      return (of.low ^ of.low >> 31 ^ of.high) * 0x9e3779b97f4a7c15U;
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
/// All rows but one say it all: the last wire has what commutes with them.
template <int wires>
class ClassFinder {
 public:
  OperatorClass operator()(const FewWireRows<wires>& rows);

 private:
  using Block = std::uint8_t;
  using Order = std::array<int, wires>;
  /// For each column, in a byte, the one-qubit gates that lead to the least rows so far.
  using Gates = std::uint64_t;

  void read(const FewWireRows<wires>& rows);
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
