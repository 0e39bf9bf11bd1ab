#pragma once

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/effort.h"

namespace zelt::braidwerk::internal {

/// What every circuit takes that makes a state of zeros, or encodes into a code, counted in CNOTs;
/// `joins` are the gates that it takes to join the qubits that are entangled, s - 1 for s of them.
///
/// Layers. One layer joins pairs alone, and a layer has at most n / 2 gates. After d layers the
/// stabilisers have a basis of strings on at most 2^d qubits each, the images of Z; where the ones
/// so light do not make up all of them, there are more layers. These are counted on up to 12
/// qubits.
LowerBound bound_of_state(const PauliFrame& stabilisers, int joins, int largest_group);

}  // namespace zelt::braidwerk::internal
