#pragma once

#include <bit>
#include <span>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bool_rows.h"

namespace zelt::braidwerk::internal {

/// A set of columns of a packed matrix: the words of a row that hold some of them, ascending, each
/// with a mask that is not 0. Small sets of a wide matrix stay small, large ones are counted 64
/// columns at a time.
struct ColumnWord {
  int word;
  Word mask;
};
using Columns = std::vector<ColumnWord>;
using ColumnsView = std::span<const ColumnWord>;

inline Columns all_columns(int count) {
  Columns columns;
  for (int first = 0; first < count; first += word_bits) {
    columns.push_back({first / word_bits, low_bits(count - first)});
  }
  return columns;
}

/// `list` is ascending.
template <class Range>
Columns pack_columns(const Range& list) {
  Columns columns;
  for (const int column : list) {
    const int word = column / word_bits;
    if (columns.empty() || columns.back().word != word) columns.push_back({word, 0});
    columns.back().mask |= Word{1} << (column % word_bits);
  }
  return columns;
}

inline int count_columns(ColumnsView columns) {
  int count = 0;
  for (const auto& [word, mask] : columns) count += std::popcount(mask);
  return count;
}

/// Without a count: std::popcount is a call on the base instruction set.
inline bool is_single(ColumnsView columns) {
  return columns.size() == 1 && (columns[0].mask & (columns[0].mask - 1)) == 0;
}

/// Calls f for each column, ascending.
template <class F>
void for_each_column(ColumnsView columns, F&& f) {
  for (const auto& [word, mask] : columns) {
    for (Word rest = mask; rest != 0; rest &= rest - 1) {
      f(word * word_bits + std::countr_zero(rest));
    }
  }
}

/// How many of the columns have a 1 on the row.
inline int count_ones(ColumnsView columns, const Word* row) {
  int count = 0;
  for (const auto& [word, mask] : columns) count += std::popcount(row[word] & mask);
  return count;
}

/// Appends the columns with a 1 on the row to `ones`, the others to `zeros`.
inline void split_columns(ColumnsView columns, const Word* row, Columns& zeros, Columns& ones) {
  for (const auto& [word, mask] : columns) {
    if (const Word set = mask & row[word]) ones.push_back({word, set});
    if (const Word clear = mask & ~row[word]) zeros.push_back({word, clear});
  }
}

}  // namespace zelt::braidwerk::internal
