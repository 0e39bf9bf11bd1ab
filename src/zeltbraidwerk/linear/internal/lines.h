#pragma once

#include <array>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"

namespace zelt::braidwerk::internal {

/// An elementary operation: row `from` is added to row `to`, or column `from` to column `to`.
struct LineAddition {
  int from = -1;
  int to = -1;
  bool row = false;

  bool operator==(const LineAddition&) const = default;
};

/// The mark for "no operation".
inline constexpr LineAddition no_addition{};

/// A square matrix held by rows and by columns at once, with the weight of every line, so that row
/// and column additions are one code. side(true) has the rows as lines, side(false) the columns;
/// each is the transpose of the other at all times.
class Lines {
 public:
  explicit Lines(BitMatrix rows);

  int size() const { return side_[0].rows(); }
  int ones() const { return ones_; }
  const BitMatrix& side(bool row) const { return side_[row]; }
  const int* weights(bool row) const { return weights_[row].data(); }

  void add(LineAddition addition);

  /// No row holds two or more ones: for an invertible matrix, it is a permutation.
  bool reduced() const;

  /// The first addition that makes the matrix reduced, by `from`, then `to`, rows before columns;
  /// no_addition when there is none.
  LineAddition completion() const;

 private:
  bool completes(LineAddition addition) const;

  std::array<BitMatrix, 2> side_;
  std::array<std::vector<int>, 2> weights_;
  int ones_ = 0;
};

}  // namespace zelt::braidwerk::internal
