#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bool_rows.h"

/// \file
/// Rows of savings, 16 at a time: inline pieces of the kernels that are compiled for several
/// instruction sets.

namespace zelt::braidwerk::internal {

using Cell = std::int16_t;

/// Rows are whole vectors long; the cells after the last column hold no_saving at all times.
inline constexpr std::size_t cell_lanes = 16;
inline constexpr Cell no_saving = std::numeric_limits<Cell>::min();

using CellVector = Cell __attribute__((vector_size(cell_lanes * sizeof(Cell)), may_alias));
using HalfCellVector = Cell __attribute__((vector_size(cell_lanes * sizeof(Cell) / 2)));

inline CellVector& vector_at(Cell* cells) {
  return *reinterpret_cast<CellVector*>(cells);
}
inline const CellVector& vector_at(const Cell* cells) {
  return *reinterpret_cast<const CellVector*>(cells);
}

/// Vectors lie on multiples of their size, which rows of whole vectors keep. Everything that is
/// read or written by vectors is allocated here; no vector straddles two cache lines.
template <typename T>
struct AlignedAllocator {
  using value_type = T;
  static constexpr std::align_val_t alignment{64};

  AlignedAllocator() = default;
  template <typename U>
  AlignedAllocator(const AlignedAllocator<U>&) {}

  T* allocate(std::size_t count) {
    return static_cast<T*>(::operator new(count * sizeof(T), alignment));
  }
  void deallocate(T* p, std::size_t) { ::operator delete(p, alignment); }
  bool operator==(const AlignedAllocator&) const = default;
};

using CellRows = std::vector<Cell, AlignedAllocator<Cell>>;

inline int distance(const Word* a, const Word* b, int words) {
  int ones = 0;
  for (int w = 0; w < words; ++w) ones += std::popcount(a[w] ^ b[w]);
  return ones;
}

inline void raise(CellVector& largest, const CellVector& v) {
  largest = v > largest ? v : largest;
}

/// Combines all lanes by halving.
template <typename Combine>
inline Cell fold_lanes(const CellVector& v, Combine&& combine) {
  HalfCellVector halves[2];
  std::memcpy(halves, &v, sizeof v);
  HalfCellVector folded = halves[0];
  combine(folded, halves[1]);
  for (std::size_t step = cell_lanes / 4; step != 0; step /= 2) {
    HalfCellVector swapped;
    for (std::size_t lane = 0; lane < cell_lanes / 2; ++lane) swapped[lane] = folded[lane ^ step];
    combine(folded, swapped);
  }
  return folded[0];
}

inline Cell largest_lane(const CellVector& v) {
  return fold_lanes(v, [](HalfCellVector& a, const HalfCellVector& b) { a = b > a ? b : a; });
}

inline Cell sum_of_lanes(const CellVector& v) {
  return fold_lanes(v, [](HalfCellVector& a, const HalfCellVector& b) { a += b; });
}

inline Cell largest_cell(const Cell* row, std::size_t stride) {
  CellVector largest = CellVector{} + no_saving;
  for (std::size_t k = 0; k < stride; k += cell_lanes) raise(largest, vector_at(row + k));
  return largest_lane(largest);
}

inline unsigned bit_at(const Word* words, int k) {
  return static_cast<unsigned>(words[k / word_bits] >> (k % word_bits)) & 1;
}

inline constexpr CellVector lane_bits = {1,       1 << 1,  1 << 2,  1 << 3,      1 << 4,  1 << 5,
                                         1 << 6,  1 << 7,  1 << 8,  1 << 9,      1 << 10, 1 << 11,
                                         1 << 12, 1 << 13, 1 << 14, Cell(-32768)};
inline constexpr CellVector lane_numbers = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

/// The 16 bits from place k on, as cells 0 and 1.
inline void expand_bits(const Word* words, std::size_t k, CellVector& bits) {
  const auto packed = static_cast<Cell>(words[k / word_bits] >> (k % word_bits));
  bits = -(((CellVector{} + packed) & lane_bits) == lane_bits);
}

/// Which of four rows of changes a line takes from a place that went from `before` to `after`.
inline std::size_t change_kind(const Word* before, const Word* after, int k) {
  return 2 * bit_at(before, k) + bit_at(after, k);
}

/// The savings of a matrix are sums over places. With x and y the entries of two lines in one
/// place, adding the first line to the second saves a one there when both are 1, and costs one when
/// only x is.
///
/// Four rows of cells, by change_kind of line a: by how much the saving of the pair (a, b) grows
/// when a place goes from `before` to `after`; a is added to b, or backward, b to a. Forward, kind
/// 0 is all zero, kinds 1 and 2 are at most 1, kind 3 at most 2.
inline void fill_changes(const Word* before, const Word* after, int n, std::size_t stride,
                         bool backward, Cell* changes) {
  for (std::size_t k = 0; k < stride; k += cell_lanes) {
    CellVector was;
    CellVector is;
    expand_bits(before, k, was);
    expand_bits(after, k, is);
    Cell* out = changes + k;
    if (backward) {
      vector_at(out) = was - is;
      vector_at(out + stride) = is + was;
      vector_at(out + 2 * stride) = -is - was;
      vector_at(out + 3 * stride) = is - was;
    } else {
      const CellVector inside = lane_numbers + static_cast<Cell>(k) < static_cast<Cell>(n);
      vector_at(out) = CellVector{};
      vector_at(out + stride) = (is + is - Cell{1}) & inside;
      vector_at(out + 2 * stride) = (Cell{1} - was - was) & inside;
      vector_at(out + 3 * stride) = is + is - was - was;
    }
  }
}

}  // namespace zelt::braidwerk::internal
