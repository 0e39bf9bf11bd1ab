#pragma once

#include "zeltbraidwerk/circuit/internal/steps.h"

namespace zelt::braidwerk::internal {

/// Merges rotations about the same string wherever all between them commute with it, and turns
/// those whose angle has become a multiple of pi/2 into Clifford gates where the first of them
/// stood. Both again, as Clifford gates change the strings after them, until nothing changes. The
/// rotations that are left are numbered in the order of the steps.
///
/// No gate on two qubits is added or removed. A pass costs O(gates * qubits / 64), and of each
/// rotation that finds its string again, the rotations in between.
void fold(StepCircuit& circuit);

}  // namespace zelt::braidwerk::internal
