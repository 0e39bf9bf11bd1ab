#pragma once

#include <tuple>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {

struct FactorDecoding {
  std::vector<std::tuple<int, int>> gates;
  bool finished;  ///< false: stopped, and the gates implement nothing
};

/// CNOT circuit of a matrix from its LU factors, each row of a factor found by syndrome decoding.
/// perm[r] is set to the wire that row r is matched to.
FactorDecoding decode_factors(BitMatrix m, std::vector<int>& perm, int width, int depth,
                              const Control& control);

}  // namespace zelt::braidwerk::internal
