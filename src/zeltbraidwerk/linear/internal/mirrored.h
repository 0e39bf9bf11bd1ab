#pragma once

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"

namespace zelt::braidwerk::internal {

/// The matrix turned by half a circle: rows and columns both in reverse order. Upper triangular
/// becomes lower triangular, so what works below the diagonal serves above it too.
BitMatrix mirrored(const BitMatrix& m);

}  // namespace zelt::braidwerk::internal
