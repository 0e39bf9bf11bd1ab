#pragma once

#include <tuple>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"

namespace zelt::braidwerk::internal {

/// (a, b): add row a to row b.
using RowPair = std::tuple<int, int>;

/// Matches rows that agree on a long stretch of the columns from `col` on: all but one are the
/// larger member of one pair. `rows` keeps the one that is not, the smallest, if there is any.
std::vector<RowPair> match_rows(const BitMatrix& m, int col, std::vector<int>& rows);

/// match_rows on the rows from `col` on with a one in column `col`, for the columns after it.
std::vector<RowPair> match_column(const BitMatrix& m, int col);

/// Two of the rows from `start` on that agree on a long stretch of the columns from `start` on,
/// the smaller first; (-1, -1) when there are not two.
RowPair choose_pair(const BitMatrix& m, int start);

/// Reduces m to the identity, lower triangle first; returns the row operations in order.
std::vector<RowPair> pair_elimination(BitMatrix& m);

}  // namespace zelt::braidwerk::internal
