#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A circuit of an invertible block, outputs anywhere.
using LeafSearch = std::function<GateList(const BitMatrix&)>;

/// Block recursion whose steps are beam searches: a random choice of the lines that make up the
/// halves, both blocks off the diagonal cleared by few layers (see BlockReduction) and the halves
/// likewise, side by side, down to `leaf_wires`, where `leaf` makes the circuits. Outputs anywhere.
/// Nothing when the effort was spent before.
///
/// The recursion is that of BlockRecursion (Goubault de Brugiere and others, 2021), which takes the
/// matching that saves most as the next layer.
std::optional<GateList> search_by_blocks(const BitMatrix& m, int leaf_wires, int width,
                                         const LeafSearch& leaf, Rng& rng, Meter& meter);

}  // namespace zelt::braidwerk::internal
