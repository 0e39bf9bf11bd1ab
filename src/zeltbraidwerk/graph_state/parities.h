#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/boolean_matrix.h"
#include "zeltbraidwerk/graph_state/graph_state.h"

/// \file
/// One step of the induction over qubits: a circuit that solves the first qubits is extended to one
/// more, L, by small groups of gates on L and an old qubit k, inserted anywhere.
///
/// Four parallel lists, index = candidate: the parity that the group adds to row L, as it stands at
/// the end of the circuit; the position, in front of the gate of that index; the qubit k; and the
/// code of the group:
///
/// | code | group                                | parity at its position                    |
/// |------|--------------------------------------|-------------------------------------------|
/// | 1    | CNOT(L, k)                           | row k of the graph                        |
/// | 2    | CZ(L, k)                             | the unit vector of k                      |
/// | 3    | S(k), CNOT(L, k), S(k)               | row k of the graph, its entry k flipped   |

/// Appends every candidate to the lists, in ascending order of position. `graph` is the graph at
/// the start of the circuit and n the number of old qubits; `target`, row L of the graph, is
/// rewritten to what it is at the end of the circuit. Unit vectors have n entries, the other
/// parities as many as the rows of the graph. Duplicates stay. The candidates of every wire along a
/// circuit of CZ and CNOT gates; O(CNOTs * candidates / 64 + ones of the parities).
ZELTBRAIDWERK_EXPORT void get_parities(const TripleCircuit& circuit, BoolMatrix graph,
                                       BoolRow& target, BoolMatrix& parities,
                                       std::vector<int>& positions, std::vector<int>& qubits,
                                       std::vector<int>& codes, int n);

/// Puts the groups of the chosen candidates, listed in ascending order, into the circuit. n is the
/// new number of qubits: L is n - 1.
ZELTBRAIDWERK_EXPORT void insert_gates(TripleCircuit& circuit, const std::vector<int>& chosen,
                                       const std::vector<int>& positions,
                                       const std::vector<int>& qubits,
                                       const std::vector<int>& codes, int n);
