#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "zeltbraidwerk/foundations/internal/bool_rows.h"

/// \file
/// Inner loops over rows of savings, to be inlined into the kernels that are compiled for several
/// instruction sets.

namespace zelt::braidwerk::internal {

using Cell = std::int16_t;

/// Rows are whole vectors long; the cells behind the last column hold no_saving.
inline constexpr std::size_t cell_lanes = 16;
inline constexpr Cell no_saving = std::numeric_limits<Cell>::min();

inline int distance(const Word* a, const Word* b, int words) {
  int ones = 0;
  for (int w = 0; w < words; ++w) ones += std::popcount(a[w] ^ b[w]);
  return ones;
}

inline Cell largest_cell(const Cell* row, std::size_t stride) {
  Cell largest = no_saving;
  for (std::size_t k = 0; k < stride; ++k) largest = row[k] > largest ? row[k] : largest;
  return largest;
}

inline unsigned bit_at(const Word* words, int k) {
  return static_cast<unsigned>(words[k / word_bits] >> (k % word_bits)) & 1;
}

/// Bits as cells 0 and 1.
inline void expand_bits(const Word* words, Cell* cells, std::size_t stride) {
  for (std::size_t k = 0; k < stride; k += cell_lanes) {
    const auto bits = static_cast<std::uint16_t>(words[k / word_bits] >> (k % word_bits));
    for (std::size_t lane = 0; lane < cell_lanes; ++lane) {
      cells[k + lane] = (bits & (1u << lane)) != 0;
    }
  }
}

/// Which of four rows of changes a line takes from a place that went from `before` to `after`.
inline std::size_t change_kind(const Word* before, const Word* after, int k) {
  return 2 * bit_at(before, k) + bit_at(after, k);
}

/// The savings of a matrix are sums over places. With x and y the entries of two lines in one
/// place, adding the first line to the second saves a one there when both are 1, and costs one when
/// only x is.
///
/// Four rows of cells, by change_kind of line a: what the pair (a, b) gains when a place goes from
/// `before` to `after`, as the addition of a to b, or backward, of b to a. Kind 0 is all zero
/// forward. `bits` is room for two rows.
inline void fill_changes(const Word* before, const Word* after, int n, std::size_t stride,
                         bool backward, Cell* bits, Cell* changes) {
  Cell* __restrict old_bits = bits;
  Cell* __restrict new_bits = bits + stride;
  expand_bits(before, old_bits, stride);
  expand_bits(after, new_bits, stride);
  for (int kind = 0; kind < 4; ++kind) {
    const int was = kind / 2;
    const int is = kind % 2;
    Cell* __restrict row = changes + static_cast<std::size_t>(kind) * stride;
    if (backward) {
      for (std::size_t k = 0; k < stride; ++k) {
        row[k] = static_cast<Cell>((2 * is - 1) * new_bits[k] - (2 * was - 1) * old_bits[k]);
      }
    } else {
      for (std::size_t k = 0; k < stride; ++k) {
        row[k] = static_cast<Cell>(is * (2 * new_bits[k] - 1) - was * (2 * old_bits[k] - 1));
      }
      for (std::size_t k = static_cast<std::size_t>(n); k < stride; ++k) row[k] = 0;
    }
  }
}

}  // namespace zelt::braidwerk::internal
