#include "zeltbraidwerk/linear/search/internal/reduction_gains.h"

#include <algorithm>
#include <bit>
#include <cstddef>

#include "zeltbraidwerk/foundations/internal/clones.h"

namespace zelt::braidwerk::internal {
namespace {

/// row[j] = sum over the ones c of own line i of curvatures(c, j).
inline void sum_curvatures(const Word* line, const float* curvatures, int n, int stride,
                           float* row) {
  std::fill(row, row + n, 0.0F);
  for_each_bit(line, stride, [&](int c) {
    const float* from = curvatures + static_cast<std::ptrdiff_t>(c) * n;
    for (int j = 0; j < n; ++j) row[j] += from[j];
  });
}

ZELTBRAIDWERK_CLONES void fill_curvatures_clone(const Word* column, float curvature, int n,
                                                float* row) {
  for (int first = 0; first < n; first += 32) {
    const auto bits = static_cast<std::uint32_t>(column[first / word_bits] >> (first % word_bits));
    const int count = n - first < 32 ? n - first : 32;
    for (int j = 0; j < count; ++j) row[first + j] = (bits >> j) & 1U ? curvature : 0.0F;
  }
}

ZELTBRAIDWERK_CLONES void gains_of_line_clone(const CrossedLines& lines, int i,
                                              const float* curvatures, const float* rises,
                                              const float* f, float* row) {
  const int n = lines.n;
  const int stride = lines.stride;
  const Word* line = lines.own + static_cast<std::ptrdiff_t>(i) * stride;
  sum_curvatures(line, curvatures, n, stride, row);
  const float own = f[lines.own_weights[i]];
  if (stride == 1) {
    for (int j = 0; j < n; ++j) {
      row[j] += rises[j] + (f[std::popcount(line[0] ^ lines.own[j])] - own);
    }
    return;
  }
  for (int j = 0; j < n; ++j) {
    const Word* other = lines.own + static_cast<std::ptrdiff_t>(j) * stride;
    int weight = 0;
    for (int w = 0; w < stride; ++w) weight += std::popcount(line[w] ^ other[w]);
    row[j] += rises[j] + (f[weight] - own);
  }
}

ZELTBRAIDWERK_CLONES void sum_over_lines_clone(const CrossedLines& lines, const float* step,
                                               float* rises) {
  for (int j = 0; j < lines.n; ++j) {
    float sum = 0;
    for_each_bit(lines.own + static_cast<std::ptrdiff_t>(j) * lines.stride, lines.stride,
                 [&](int c) { sum += step[c]; });
    rises[j] = sum;
  }
}

}  // namespace

void fill_curvatures(const Word* column, float curvature, int n, float* row) {
  fill_curvatures_clone(column, curvature, n, row);
}

void gains_of_line(const CrossedLines& lines, int i, const float* curvatures, const float* rises,
                   const float* f, float* row) {
  gains_of_line_clone(lines, i, curvatures, rises, f, row);
}

void sum_over_lines(const CrossedLines& lines, const float* step, float* rises) {
  sum_over_lines_clone(lines, step, rises);
}

}  // namespace zelt::braidwerk::internal
