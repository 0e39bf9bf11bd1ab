#pragma once

#include <set>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/pauli/pauli_table.h"

/// \file
/// Recursive synthesis of Pauli rotations, after GraySynth: rotations are grouped by their letter
/// on the qubit on which most of them agree, and a qubit on which a whole group agrees is folded
/// into the group's target by one CNOT, so that one CNOT serves many rotations.

/// Circuit of H, "RX", "RY", "RZ", "PH" and CNOT in which each rotation comes up once. Their order
/// is not kept: rotations that do not commute may change places. Nothing undoes the basis changes:
/// the circuit is the rotations followed by the Clifford operator of its gates other than them.
///
/// Of the tableau only nbqbits is read. Throws std::invalid_argument for a string of another
/// length. Identity strings, global phases, get no gate. The result is a pure function of the
/// input. Cost O(rotations * qubits^2 + CNOTs * rotations / 64).
///
/// The recursion is that of M. Amy, P. Azimzadeh, M. Mosca, "On the controlled-NOT complexity of
/// controlled-NOT-phase circuits", Quantum Science and Technology 4 (2019) 015002, from parities
/// taken over to Pauli strings. One group's gates disturb the groups that follow; rows that slip
/// through are served by further passes over what is left.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> pauli_synth(
    PauliRotationMap& rotations, structures::OperatorTableau& tableau);

/// A group of rotations.
struct ZELTBRAIDWERK_EXPORT Part {
  int target;             ///< the qubit that collects it, -1 while none is chosen
  std::set<int> rows;     ///< its rows of the table
  std::vector<int> cols;  ///< the qubits that it may still be split on
};

/// Serves one group of rows of a table on n qubits, as far as one pass can. `done` flags the rows
/// emitted. Every row of the table is rewritten by the gates appended.
ZELTBRAIDWERK_EXPORT void __pauli_synth_rec(  // NOLINT(bugprone-reserved-identifier)
    Part& part, int n, PauliTable& table, std::vector<structures::Parameter>& params,
    std::vector<structures::Gate>& circuit, BoolRow& done);

/// Appends the rotation of a row with a single letter ("RX", "RY" or "RZ") and returns true; false
/// for any other row.
ZELTBRAIDWERK_EXPORT bool synthesize_trivial(PauliTable& table,
                                             std::vector<structures::Parameter>& params,
                                             unsigned int row,
                                             std::vector<structures::Gate>& circuit);

/// How many of the rows hold each of the four codes in the column.
ZELTBRAIDWERK_EXPORT std::vector<int> get_counts(const PauliTable& table, const std::set<int>& rows,
                                                 int col);

/// Moves the rows of `from` with the letter in the column to `to`. What `to` held before is taken
/// out of `from` as well.
ZELTBRAIDWERK_EXPORT void get_pauli_cols(std::set<int>& from, std::set<int>& to, int col,
                                         const PauliTable& table, unsigned char letter);
/// The same for the rows with I.
ZELTBRAIDWERK_EXPORT void get_I_cols(std::set<int>& from, std::set<int>& to, int col,
                                     const PauliTable& table);

/// The number of letters other than I; the last of them and its place go to `letter` and `index`,
/// which stay when there is none.
ZELTBRAIDWERK_EXPORT int weight(std::vector<unsigned char>& row, unsigned char& letter, int& index);
