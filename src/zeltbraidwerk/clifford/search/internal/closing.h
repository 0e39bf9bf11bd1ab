#pragma once

#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// Brings every output of a list back to its own wire. Blocks on `window` wires take in exchanges
/// of outputs, mostly for one gate or two each; three gates an exchange where no block does.
GateList with_outputs_in_place(const GateList& list, int window, Rng& rng);

/// The same by two layers of swaps after the gates: more of them, but few layers. Any permutation
/// is one of two reflections after the other on each of its cycles.
GateList with_layers_of_swaps(GateList list);

}  // namespace zelt::braidwerk::internal
