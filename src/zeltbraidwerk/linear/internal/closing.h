#pragma once

#include "zeltbraidwerk/foundations/cnot_circuit.h"
#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/linear/internal/facing.h"
#include "zeltbraidwerk/search/objective.h"

namespace zelt::braidwerk::internal {

/// Circuits of the very map, outputs in their places, from a circuit that leaves them on other
/// wires.

/// Appends swaps of three CNOTs, in at most two layers of swaps.
structures::CnotCircuit close_by_swaps(FreeCircuit found);

/// Lets gates swap on their way: CNOT(a, b) and a swap of its wires are two CNOTs, so a gate whose
/// wires lie in one cycle of the permutation takes a swap on for one CNOT more. Which gates do is
/// found by local search; what none takes on is swapped at the end. Shorter than close_by_swaps,
/// and often deeper. Cost O(n) passes over the gates.
structures::CnotCircuit close_within_gates(const FreeCircuit& found, const Draw& draw);

/// The better of both ways to put outputs in their places.
FreeCircuit closed(FreeCircuit found, synthesis::Objective objective, const Draw& draw);

}  // namespace zelt::braidwerk::internal
