#pragma once

#include "zeltbraidwerk/linear/internal/methods.h"
#include "zeltbraidwerk/linear/synthesize.h"

namespace zelt::braidwerk::internal {

/// Of the methods that take them.
LinearMethodOptions method_options(const synthesis::LinearOptions& options);

/// Throws std::invalid_argument for options that do not fit each other, the method, or a matrix of
/// n rows, TooLargeError for a beam that does not fit into memory.
void check_options(const synthesis::LinearOptions& options, int n);

}  // namespace zelt::braidwerk::internal
