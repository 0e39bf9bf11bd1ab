#pragma once

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/linear/synthesize.h"

namespace zelt::braidwerk::internal {

/// synthesize_linear of a packed square matrix that is known to be invertible.
synthesis::LinearResult synthesize_linear(const BitMatrix& m,
                                          const synthesis::LinearOptions& options);

}  // namespace zelt::braidwerk::internal
