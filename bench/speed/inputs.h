#pragma once

#include <random>

#include "zeltbraidwerk/foundations/boolean_matrix.h"

namespace bench {

inline BoolMatrix random_matrix(int n, std::mt19937& engine) {
  BoolMatrix m(static_cast<std::size_t>(n), BoolRow(static_cast<std::size_t>(n)));
  for (BoolRow& row : m) {
    for (std::size_t c = 0; c < row.size(); ++c) row[c] = (engine() & 1) != 0;
  }
  return m;
}

/// The same matrix for the same size, uniform among the invertible ones.
inline BoolMatrix random_invertible(int n) {
  std::mt19937 engine(static_cast<unsigned>(7000 + n));
  BoolMatrix m = random_matrix(n, engine);
  while (boolean_matrix_det(m, n) == 0) m = random_matrix(n, engine);
  return m;
}

}  // namespace bench
