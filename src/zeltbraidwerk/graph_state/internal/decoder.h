#pragma once

#include <optional>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/draw.h"

namespace zelt::braidwerk::internal {

/// A decoding problem: one row per bit, column 0 the syndrome, column j + 1 vector j. Answers list
/// vectors in ascending order, none twice.

/// By nearest vectors. Nothing where the way never ends.
std::optional<std::vector<int>> decode_greedily(BitMatrix problem);

/// The shortest answer of decode_greedily on the problem itself and on `tries` random forms of it;
/// empty when none has one. Ends early when no answer can be shorter, or when the control says so.
std::vector<int> decode(const BitMatrix& problem, int tries, const Draw& draw,
                        const Control& control);

}  // namespace zelt::braidwerk::internal
