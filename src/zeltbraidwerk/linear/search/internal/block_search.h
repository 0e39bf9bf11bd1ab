#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A circuit of an invertible matrix, outputs anywhere.
using HalfSearch = std::function<GateList(const BitMatrix&)>;

/// A step of the block recursion by search, of two wires or more: lines are chosen for the halves
/// so that both quotients are light, and both blocks off the diagonal are cleared by few layers
/// (see BlockReduction), one from each end of the circuit. Of some choices, in about that number of
/// steps, the one with fewest layers is taken. `half` makes the circuits of the halves, which stand
/// side by side. Outputs anywhere. Nothing when the effort was spent before.
///
/// The recursion is that of BlockRecursion (Goubault de Brugiere and others, 2021), which takes the
/// matching that saves most as the next layer.
std::optional<GateList> search_by_blocks(const BitMatrix& m, std::uint64_t steps,
                                         const HalfSearch& half, Rng& rng, Meter& meter);

}  // namespace zelt::braidwerk::internal
