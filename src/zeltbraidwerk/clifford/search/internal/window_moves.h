#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// A Clifford operator on up to four qubits, signs left out, by its rows: byte 2 i + k holds the
/// Pauli operator that the operator turns into X (k = 0) or Z (k = 1) on wire i. A Pauli operator
/// is a byte, the label of wire q in its bits 2 q and 2 q + 1, and products are XORs.
using WindowRows = std::uint64_t;

constexpr WindowRows identity_rows_on(int wires) {
  WindowRows rows = 0;
  for (int bit = 0; bit < 2 * wires; ++bit) rows |= WindowRows{1} << (9 * bit);
  return rows;
}

/// Whether every wire's labels stand for labels of the same wire.
template <int wires>
constexpr bool are_on_own_wires(WindowRows rows) {
  WindowRows own = 0;
  for (int k = 0; k < 2 * wires; ++k) own |= WindowRows{3} << (8 * k + 2 * (k / 2));
  return (rows & ~own) == 0;
}

/// The gates on wires a < b, nine per pair, in an order in which fewer wires have the first ones.
inline constexpr int moves_on(int wires) {
  return 9 * wires * (wires - 1) / 2;
}

constexpr std::uint8_t pauli_of(const Gate& gate) {
  return static_cast<std::uint8_t>(label_of(gate.a) << (2 * wire_of(gate.a)) |
                                   label_of(gate.b) << (2 * wire_of(gate.b)));
}

/// Number of the move with labels `a` < `b` on wires in that order.
constexpr int move_number(End a, End b) {
  const int pair = wire_of(b) * (wire_of(b) - 1) / 2 + wire_of(a);
  return 9 * pair + 3 * (label_of(a) - 1) + label_of(b) - 1;
}

inline constexpr auto window_gates = [] {
  std::array<Gate, moves_on(4)> gates{};
  for (int b = 1; b < 4; ++b) {
    for (int a = 0; a < b; ++a) {
      for (int labels = 0; labels < 9; ++labels) {
        const End from = end_of(a, labels / 3 + 1);
        const End to = end_of(b, labels % 3 + 1);
        gates[static_cast<std::size_t>(move_number(from, to))] = {from, to};
      }
    }
  }
  return gates;
}();

/// The rows of the operator with the gate of Pauli operator `pauli` put before it.
constexpr WindowRows rows_after(std::uint8_t pauli, WindowRows rows) {
  constexpr WindowRows lowest = 0x0101010101010101;
  const unsigned swapped = (pauli & 0x55U) << 1 | (pauli & 0xaaU) >> 1;
  // The parity of each byte's bits in `swapped`, in its lowest bit: whether the two anticommute.
  WindowRows odd = rows & (lowest * swapped);
  odd ^= odd >> 4;
  odd ^= odd >> 2;
  odd ^= odd >> 1;
  return rows ^ (odd & lowest) * pauli;
}

inline WindowRows rows_after(const Gate& gate, WindowRows rows) {
  return rows_after(pauli_of(gate), rows);
}

/// The rows of a block of gates.
inline WindowRows rows_of(const std::vector<Gate>& block, int wires) {
  WindowRows rows = identity_rows_on(wires);
  for (auto gate = block.rbegin(); gate != block.rend(); ++gate) rows = rows_after(*gate, rows);
  return rows;
}

}  // namespace zelt::braidwerk::internal
