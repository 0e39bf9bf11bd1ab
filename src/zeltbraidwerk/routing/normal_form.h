#pragma once

#include <iosfwd>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/boolean_matrix.h"
#include "zeltbraidwerk/foundations/operator_tableau.h"

/// \file
/// The normal form of a circuit of Clifford gates and rotations: Pauli rotations, then one Clifford
/// operator. Every Clifford gate is pushed to the end of the circuit and conjugates the rotations
/// that it passes, as in D. Litinski, "A game of surface codes", Quantum 3 (2019) 128.

namespace synthesis {

/// Rotations exp(-i angle P / 2) in time order: the letters of P, the one at place q for qubit q,
/// and the angle in radians, which carries the sign.
using RotationSequence = std::vector<std::pair<std::string, structures::Parameter>>;

/// The names of Clifford gates and of rotations. "I" and "S*" are Clifford and change nothing.
/// @{
ZELTBRAIDWERK_EXPORT extern const std::vector<std::string> CLIFFORDS, ROT;
/// @}

/// n letters, I but for the axis of a rotation on its first qubit. Any other gate has no letter
/// there, and the string is one shorter.
ZELTBRAIDWERK_EXPORT std::string get_axis(const structures::Gate& gate, int n);

/// A gate named in CLIFFORDS, or one named in ROT by a Clifford angle. Throws std::out_of_range for
/// a rotation without a parameter.
ZELTBRAIDWERK_EXPORT bool is_clifford(const structures::Gate& gate);

/// 0, pi/2, -pi/2, pi or -pi, to a tolerance of 1e-5. Angles are not reduced: 3 pi/2 is none. A
/// symbolic angle is none.
ZELTBRAIDWERK_EXPORT bool is_clifford_angle(const structures::Parameter& angle);

/// Whether two Pauli strings commute. Throws std::out_of_range when b is shorter than a.
ZELTBRAIDWERK_EXPORT bool commute(const std::string& a, const std::string& b);

/// Moves each rotation back past all those that it commutes with and adds its angle to the nearest
/// one about the same string; sums are those of Parameter::operator+=. Throws std::out_of_range for
/// strings of different length. Cost O(rotations * those passed * qubits / 64); only rotations that
/// find their string walk at all.
ZELTBRAIDWERK_EXPORT RotationSequence merge_rotations(const RotationSequence& rotations);

/// Right updates of the tableau by a rotation with a Clifford angle, so that it passes into the
/// Clifford operator after. An angle near 0, and an identity string, change nothing; one that is
/// not Clifford counts as pi/2.
ZELTBRAIDWERK_EXPORT void update_clifford(std::pair<std::string, structures::Parameter>& rotation,
                                          structures::OperatorTableau& tableau);

/// Folds the rotations with a Clifford angle into the tableau, and reads all others through the
/// tableau as it stands at their place. True when any was folded. Throws as merge_rotations.
ZELTBRAIDWERK_EXPORT bool renormalize(RotationSequence& rotations,
                                      structures::OperatorTableau& tableau);

/// The circuit equals the blocks' rotations, block after block, followed by the inverse of the
/// operator of the tableau, up to a global phase; for a start other than the identity, read the
/// circuit after the inverse of the start's operator.
///
/// `merge` merges rotations and folds sums that have become Clifford, once. With
/// `commuting_blocks` each block is the longest run of rotations that commute pairwise, equal
/// strings in it joined; without, each rotation is a block of its own after one empty block. No
/// rotations: one empty block.
///
/// Throws std::logic_error for a gate that is neither in CLIFFORDS nor in ROT, and
/// std::out_of_range for a rotation without a parameter or outside the tableau's qubits. Cost
/// O(gates * qubits), and that of merge_rotations.
ZELTBRAIDWERK_EXPORT std::pair<std::vector<RotationSequence>, structures::OperatorTableau>
normalize_circuit(const std::vector<structures::Gate>& circuit,
                  structures::OperatorTableau& tableau, bool commuting_blocks, bool merge);

/// One gate a qubit that turns the string's letter into Z: "H" for X, "RX" by pi/2 for Y. Looks at
/// the first n letters.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> get_basis_change(const std::string& pauli,
                                                                    int n);

/// One line per entry in key order: `1 0 1 : 0.5`.
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(
    std::ostream& out, const std::map<BoolRow, structures::Parameter>& polynomial);

/// Each bit followed by a blank, no line end.
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(std::ostream& out, const BoolRow& row);

}  // namespace synthesis
