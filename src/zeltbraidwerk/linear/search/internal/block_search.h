#pragma once

#include <functional>
#include <optional>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A circuit of an invertible matrix, outputs anywhere.
using HalfSearch = std::function<GateList(const BitMatrix&)>;

/// A step of the block recursion by search, of two wires or more: a random choice of the lines that
/// make up the halves, and both blocks off the diagonal cleared by few layers (see BlockReduction),
/// by beams of that width. `half` makes the circuits of the halves, which stand side by side.
/// Outputs anywhere. Nothing when the effort was spent before.
///
/// The recursion is that of BlockRecursion (Goubault de Brugiere and others, 2021), which takes the
/// matching that saves most as the next layer.
std::optional<GateList> search_by_blocks(const BitMatrix& m, int width, const HalfSearch& half,
                                         Rng& rng, Meter& meter);

}  // namespace zelt::braidwerk::internal
