#pragma once

#include <set>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/graphs/graph.h"
#include "zeltbraidwerk/pauli/pauli_table.h"

/// \file
/// Greedy co-diagonalisation: a circuit of H, "RX" by pi/2 and CNOT after which rotations that
/// commute pairwise hold only I and Z. The table and its angles are rewritten by the circuit, so
/// that the rotations equal the circuit, the rewritten rotations, and the inverse of the circuit.
///
/// That the rows commute is not checked: otherwise the functions end all the same, with a table
/// that is not diagonal. O(n^3 * rows / 64) for n qubits; at most O(n^2) CNOTs.
///
/// After E. van den Berg, K. Temme, "Circuit optimization of Hamiltonian simulation by simultaneous
/// diagonalization of Pauli clusters", Quantum 4 (2020) 322; the pairs of qubits are those of
/// A. Cowtan, W. Simmons, R. Duncan, "A generic compilation strategy for the unitary coupled
/// cluster ansatz", arXiv:2007.10515 (2020).

/// For a machine on which any two qubits may meet.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> duncan_co_diag(
    PauliTable& table, std::vector<structures::Parameter>& params);

/// For a device: every CNOT acts on an edge of the graph, whose shortest paths must be set. Throws
/// what the trees throw when the qubits are not connected.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> generate_basis_change_aa(
    PauliTable& table, std::vector<structures::Parameter>& params, structures::Graph& graph);

/// The steps, each on the qubits still `active`, the ones that may hold an X or a Y. They append to
/// the circuit and rewrite the table.
///
/// Every active qubit on which the rows have one letter at most gets it turned into Z and leaves.
ZELTBRAIDWERK_EXPORT void update_single_qubits(PauliTable& table,
                                               std::vector<structures::Parameter>& params,
                                               std::set<int>& active,
                                               std::vector<structures::Gate>& circuit);

/// Finds two active qubits, with a letter each, such that every row has either on both qubits or on
/// none of them a letter that is neither I nor the one given. A CNOT then clears the second, which
/// leaves. Pairs in ascending order, the second letter before the first. False when there is none.
ZELTBRAIDWERK_EXPORT bool update_pair_qubits(PauliTable& table,
                                             std::vector<structures::Parameter>& params,
                                             std::set<int>& active,
                                             std::vector<structures::Gate>& circuit);
/// The same among neighbours in the graph.
ZELTBRAIDWERK_EXPORT bool update_pair_qubits_aa(PauliTable& table,
                                                std::vector<structures::Parameter>& params,
                                                std::set<int>& active,
                                                std::vector<structures::Gate>& circuit,
                                                structures::Graph& graph);

/// Takes the first of the rows with the fewest active letters and gathers it, by a chain of CNOTs,
/// on the last of its qubits, which leaves. Clears `active` when no row has an active letter.
ZELTBRAIDWERK_EXPORT void greedy_diag(PauliTable& table, std::vector<structures::Parameter>& params,
                                      std::set<int>& active,
                                      std::vector<structures::Gate>& circuit);
/// The same along a Steiner tree of the row's qubits. Qubits of the tree that were not active may
/// pick up an X: they become active again, and the row is gathered from them as well.
ZELTBRAIDWERK_EXPORT void greedy_diag_aa(PauliTable& table,
                                         std::vector<structures::Parameter>& params,
                                         std::set<int>& active,
                                         std::vector<structures::Gate>& circuit,
                                         structures::Graph& graph);
