#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/linear/internal/cell_rows.h"
#include "zeltbraidwerk/linear/internal/lines.h"

namespace zelt::braidwerk::internal {

/// For every addition about how much it lowers the sum of the logarithms of the row weights, in
/// fixed point: enough to tell which few additions need to be computed in full.
class LogEstimates {
 public:
  explicit LogEstimates(const std::vector<double>& logs);

  void find(const Lines& lines);

  /// The largest saving is less than error() away from this. n must be at least 2.
  double largest() const { return largest_ / scale_; }
  double error() const { return error_; }

  /// A list, in any order, that holds all additions which save at least the largest saving less
  /// `tolerance`.
  std::vector<LineAddition> near_largest(double tolerance) const;

 private:
  using Estimate = std::int32_t;
  using Row = std::vector<Estimate, AlignedAllocator<Estimate>>;

  int n_;
  std::size_t stride_;
  double scale_;  ///< no sum of n differences of logarithms overflows
  double error_;
  std::vector<Estimate> logs_;
  std::array<Row, 2>
      savings_;  ///< by row: from, then to; minus infinity where there is no addition
  Estimate largest_ = 0;
  Row terms_;  ///< for each row, what it saves when the column of a one is added to another column
};

}  // namespace zelt::braidwerk::internal
