#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/pauli/pauli_table.h"

/// \file
/// Synthesis of Pauli rotations in commuting sets: split_commuting cuts them into groups, a basis
/// change makes each group diagonal, and gray_synth realises it as a phase polynomial.
///
/// `method` is that of generate_basis_change. Groups stand in the order of their colours: rotations
/// that do not commute may change places. Throws std::invalid_argument for a string of another
/// length than the first. Identity strings, global phases, get no gate. With a graph-state method
/// by decoding (neither 0 nor 1) the result is random.
///
/// E. van den Berg, K. Temme, "Circuit optimization of Hamiltonian simulation by simultaneous
/// diagonalization of Pauli clusters", Quantum 4 (2020) 322.

/// Undoes the linear map (by optimized_PMH_Algorithm) and the basis change after each group, so
/// that the circuit is the rotations alone.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> commute_pauli_synth(PauliRotationMap& rotations,
                                                                       int method);

/// Undoes nothing. `tableau` is overwritten by the Clifford operator of the circuit, and each group
/// is rewritten by that of the gates before it: the circuit, followed by the inverse of the
/// tableau's operator, is the rotations. An empty map leaves the tableau as it was.
///
/// Angles are to be symbolic, or multiples of pi/2, which make a rotation part of the tableau
/// instead; any other throws std::logic_error "Non-clifford rotation angle".
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> commute_pauli_synth_improved(
    PauliRotationMap& rotations, structures::OperatorTableau& tableau, int method);

/// Appends the gates of `source` from the last to the first.
ZELTBRAIDWERK_EXPORT void extend_rev(std::vector<structures::Gate>& target,
                                     const std::vector<structures::Gate>& source);
