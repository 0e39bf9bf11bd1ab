#pragma once

#include <cstdint>

#include "zeltbraidwerk/foundations/internal/bool_rows.h"

/// \file
/// What additions of lines gain, all of them in one pass: the kernels of Reduction.

namespace zelt::braidwerk::internal {

/// Lines of one matrix: `own` are those added to each other, `cross` those that cross them.
struct CrossedLines {
  const Word* own;
  const Word* cross;
  const std::uint16_t* own_weights;
  int n;
  int stride;
};

/// row[j] = curvature where the column has a one, 0 elsewhere.
void fill_curvatures(const Word* column, float curvature, int n, float* row);

/// row[j] becomes the gain of adding line j to line i.
void gains_of_line(const CrossedLines& lines, int i, const float* curvatures, const float* rises,
                   const float* f, float* row);

/// rises[j] = sum over the ones c of own line j of step[c].
void sum_over_lines(const CrossedLines& lines, const float* step, float* rises);

}  // namespace zelt::braidwerk::internal
