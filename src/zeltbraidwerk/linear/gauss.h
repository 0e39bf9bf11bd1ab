#pragma once

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/cnot_circuit.h"

namespace synthesis {

/// CNOT circuit of an invertible matrix by plain Gaussian elimination: at most n^2 gates.
///
/// Direction: the gates are the row operations that reduce m to the identity, in order, so
/// Simulate() of the circuit times m is the identity. The circuit implements the inverse of m;
/// after reverse() it implements m. m is not checked: on a singular one the circuit does not reduce
/// it. Cost O(n^3 / 64).
ZELTBRAIDWERK_EXPORT structures::CnotCircuit GaussianElimination(int n, BoolMatrix m);

}  // namespace synthesis
