#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/pauli/pauli_table.h"

/// \file
/// Greedy synthesis of Pauli rotations: serve the rotations that have a single letter left, then
/// play the moves, a basis change on two qubits and a CNOT, that clear the most letters at the head
/// of the list of rotations sorted by weight.
///
/// Both functions return a circuit of H, "RX", "RY", "RZ" and CNOT in which each rotation comes up
/// once; their order is not kept. Nothing undoes the moves: the whole circuit is applied to
/// `tableau` by apply_left, which thereby gains the Clifford operator after the rotations. So
/// angles are to be symbolic, which that operator does not see, or multiples of pi/2, which become
/// part of it; any other throws std::logic_error "Non-clifford rotation angle".
///
/// Throws std::invalid_argument for a string whose length is not the tableau's nbqbits. Identity
/// strings, global phases, get no gate. The result is a pure function of the input.

/// One move at a time, on two qubits of the lightest rotation, which every move makes lighter.
/// About O(qubits^2) a move to choose it and O(rotations / 64) to play it.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> greedy_pauli_synth(
    PauliRotationMap& rotations, structures::OperatorTableau& tableau);

/// A matching of moves on disjoint qubits at a time, for a shallow circuit. It takes a maximum-
/// weight matching and O(qubits^2) scores, each over the rows at the head without a letter, a time.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> greedy_pauli_synth_depth(
    PauliRotationMap& rotations, structures::OperatorTableau& tableau);

/// bring_to_z on the control and on the target, each with its code, then CNOT.
struct ZELTBRAIDWERK_EXPORT Move {
  int control;                  ///< qubit
  int target;                   ///< qubit, another one
  unsigned char control_basis;  ///< code, 1 to 3
  unsigned char target_basis;   ///< code, 1 to 3

  bool operator==(const Move&) const = default;
};

/// By how much the move (control q1, target q2, bases p1, p2) lengthens, on its two qubits
/// together, the run of rows from row 0 on that hold I there. 0 for an empty table.
ZELTBRAIDWERK_EXPORT int _get_score(  // NOLINT(bugprone-reserved-identifier)
    unsigned int q1, unsigned int q2, unsigned char p1, unsigned char p2, PauliTable& table);

/// A maximum-weight matching of qubits by the score of the best move between them; `moves` is
/// overwritten.
ZELTBRAIDWERK_EXPORT void find_best_moves(PauliTable& table, int n, std::vector<Move>& moves);
