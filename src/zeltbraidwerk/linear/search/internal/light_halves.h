#pragma once

#include <cstdint>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// The lines of an invertible matrix in two halves, so that in that order it has blocks A, B above
/// C, D, with A invertible, of half its rows (rounded down).
struct Halves {
  std::vector<int> rows;
  std::vector<int> cols;
  BitMatrix below;   ///< C A^-1, which additions of rows above to rows below clear
  BitMatrix beside;  ///< A^-1 B, which additions of columns on the left to others clear
};

/// Halves whose two quotients have few ones, by annealing over exchanges of a row, or of a column,
/// for one of the other half; a step prices some dozens of them. They are pivots of one matrix that
/// holds both quotients, and so additions of a line to some others. A random matrix of 32 rows has
/// a third of ones in its quotients then, one of 64 rows 42 %, one of 256 rows 48 %.
Halves light_halves(const BitMatrix& m, std::uint64_t steps, Rng& rng, Meter& meter);

}  // namespace zelt::braidwerk::internal
