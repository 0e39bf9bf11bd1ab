#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/linear/internal/cell_rows.h"
#include "zeltbraidwerk/linear/internal/lines.h"

namespace zelt::braidwerk::internal {

/// For every ordered pair of lines (i, j) what adding line i to line j saves: ones before minus
/// ones after. The diagonal holds -2n, below every saving, so that a scan need not skip it.
///
/// A table may add up the savings of two matrices that change together. In the second one, line j
/// is added to line i where the first adds line i to line j: its savings enter Backward.
///
/// Cells are 16 bits wide, which serves n up to 16383. Rows are padded to whole vectors with cells
/// below every value, and the largest cell of each row is kept at all times.
class SavingTable {
 public:
  enum class Direction { Forward, Backward };

  explicit SavingTable(int n);

  int size() const { return n_; }
  std::size_t stride() const { return stride_; }
  const Cell* row(int i) const { return cells_.data() + static_cast<std::size_t>(i) * stride_; }
  const Cell* largest() const { return largest_.data(); }

  Cell at(int i, int j) const { return row(i)[j]; }
  /// Sets or changes a cell without regard to largest(): call find_largest() after a series.
  void set(int i, int j, int value) { row(i)[j] = static_cast<Cell>(value); }
  void find_largest();

  /// Adds the savings of all pairs of these lines.
  void add_savings(const BitMatrix& lines, const int* weights, Direction direction);

  /// Line k of these lines came out of `before`; no other line changed.
  void line_changed(const BitMatrix& lines, int k, const Word* before, Direction direction);

  /// Every line changed in the same one place: bit k of `before` and of `after` is that entry of
  /// line k.
  void place_changed(const Word* before, const Word* after, Direction direction);

 private:
  Cell* row(int i) { return cells_.data() + static_cast<std::size_t>(i) * stride_; }

  int n_;
  std::size_t stride_;
  CellRows cells_;
  CellRows largest_;  ///< padded like a row
  CellRows changes_;  ///< room for place_changed()
};

/// The savings of row additions, side[true], and of column additions, side[false], of one matrix,
/// or of a matrix Forward and its inverse Backward: a row addition on the one is a column addition
/// on the other.
struct Savings {
  explicit Savings(int n) : side{SavingTable(n), SavingTable(n)} {}

  void add(const Lines& lines, SavingTable::Direction direction);
  /// Makes the addition and follows it.
  void apply(Lines& lines, LineAddition addition, SavingTable::Direction direction);

  /// One draw among the additions of largest saving, ordered by `from`, `to`, columns before rows.
  /// Without a draw no_addition, when there are no additions, or when only gains are wanted and
  /// nothing saves a one.
  LineAddition draw_largest(bool only_gains, const Draw& draw) const;

  std::array<SavingTable, 2> side;
};

}  // namespace zelt::braidwerk::internal
