#pragma once

#include <vector>

#include "zeltbraidwerk/circuit/internal/steps.h"

namespace zelt::braidwerk::internal {

/// Of two circuits whose Clifford steps are the same operator up to a phase, with output q of
/// `before` on wire wires[q] of `after`: k, 0 to 7, where those of `before` are exp(i k pi/4) times
/// those of `after`. Rotations are passed over. Throws std::logic_error where the operators differ
/// on the state of zeros.
///
/// The state of zeros is sent through one and back through the other, its phase included. A gate on
/// two qubits takes O(n / 64), an H or a quarter turn about X or Y O(n^2 / 64).
///
/// S. Bravyi, D. Browne, P. Calpin, E. Campbell, D. Gosset, M. Howard, "Simulation of quantum
/// circuits by low-rank stabilizer decompositions", Quantum 3 (2019) 181, section 4.1.
int clifford_phase(const StepCircuit& before, const StepCircuit& after,
                   const std::vector<int>& wires);

/// The phase, in radians, of `before` against `after`, equal operators up to it by exact rewriting,
/// with output q of `before` on wire wires[q] of `after`. "S" is "RZ" by pi/2, "PH" is "RZ".
double rewriting_phase(int qubits, const std::vector<structures::Gate>& before,
                       const std::vector<structures::Gate>& after, const std::vector<int>& wires);

}  // namespace zelt::braidwerk::internal
