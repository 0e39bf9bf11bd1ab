#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/cnot_circuit.h"

namespace synthesis {

/// CNOT circuit of an invertible matrix from its LU factors. Each row of a triangular factor is a
/// wanted parity, and the parities that exist somewhere in the circuit under construction are the
/// candidates: a CNOT from a wire at the moment when it holds a chosen one adds it. The lists of
/// parities come from SyndromeDecodingSolver_heuristic; `width` and `depth` are its own, at
/// least 1.
///
/// T. Goubault de Brugiere, M. Baboulin, B. Valiron, S. Martiel, C. Allouche, "Quantum CNOT
/// circuits synthesis for NISQ architectures using the syndrome decoding problem", Reversible
/// Computation 2020.
///
/// Direction: A times Simulate() of the circuit is the permutation with ones at (r, perm[r]); for
/// perm the identity, the circuit implements the inverse of A. `perm` must hold n entries. A must
/// be invertible; of a singular one only the part that has pivots is worked on. The same inputs
/// always give the same circuit. Cost O(n * width^depth) passes over all parities of the circuit
/// per CNOT at worst.
ZELTBRAIDWERK_EXPORT structures::CnotCircuit SyndromeSynthesis(int n, BoolMatrix const& A,
                                                               std::vector<int>& perm, int width,
                                                               int depth);

}  // namespace synthesis
