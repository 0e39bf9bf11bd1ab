#pragma once

#include "zeltbraidwerk/clifford/search/internal/window_moves.h"

/// \file
/// What a window may as well be where its wires come in as zeros: the same after Z on one of them
/// controls anything.
namespace zelt::braidwerk::internal {

inline constexpr WindowRows every_row = 0x0101010101010101;

constexpr unsigned pauli_on(int q, unsigned label) {
  return label << (2 * q);
}

/// By row, in its lowest bit: whether it anticommutes with a Pauli operator.
constexpr WindowRows anticommuting(unsigned pauli, WindowRows rows) {
  const unsigned swapped = (pauli & 0x55U) << 1 | (pauli & 0xaaU) >> 1;
  WindowRows odd = rows & (every_row * swapped);
  odd ^= odd >> 4;
  odd ^= odd >> 2;
  odd ^= odd >> 1;
  return odd & every_row;
}

/// The rows after one Pauli operator controls another, which has letters on other wires alone: what
/// anticommutes with either is multiplied by the other.
constexpr WindowRows rows_after_control(unsigned control, unsigned pauli, WindowRows rows) {
  return rows ^ anticommuting(control, rows) * pauli ^ anticommuting(pauli, rows) * control;
}

/// The bits of a number, put where `mask` has ones.
constexpr unsigned deposited(unsigned bits, unsigned mask) {
  unsigned result = 0;
  for (; mask != 0; mask &= mask - 1, bits >>= 1) {
    if ((bits & 1) != 0) result |= mask & -mask;
  }
  return result;
}

}  // namespace zelt::braidwerk::internal
