#pragma once

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/phase/search/internal/parity_search.h"
#include "zeltbraidwerk/search/internal/effort.h"

namespace zelt::braidwerk::internal {

/// What every network of CNOTs takes that shows some parities, one column each, no two equal and
/// none of fewer than two wires.
///
/// Gates. A gate changes one wire, so it shows one new parity at most. The gates before a parity
/// of w wires join these, which takes w - 1 gates, on a graph no fewer than two of the wires are
/// apart; parities that share wires are joined in the end, s wires by s - 1 gates. Where the map is
/// undone:
/// - The last gate on a wire that is a target makes an input of it again, which is none of the
///   parities; and there are as many targets as there are parities without a common wire, since a
///   value on any wire holds an input whose own wire is a target, or is that of an input.
/// - The map after the gates before a parity is undone by the others, which is no shorter.
/// - Each wire of a parity meets two gates: by one alone its input comes to stand on two wires.
///
/// Layers. A parity of w wires takes log2 w layers, on a graph as many as to its farthest wires
/// from the nearest; the same again to undo it.
LowerBound bound_of_parities(const BitMatrix& parities, const Task& task);

}  // namespace zelt::braidwerk::internal
