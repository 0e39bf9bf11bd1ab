#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/operator_tableau.h"
#include "zeltbraidwerk/graphs/graph.h"
#include "zeltbraidwerk/search/search_effort.h"

namespace synthesis {

/// A circuit of few CNOTs, and of "H", "S", "RX" by pi/2, "X", "Y" and "Z", that acts on every
/// Pauli operator as the tableau does, signs included, by search. Output q comes out on wire
/// wires[q], which is wire q with `in_place`. On up to four qubits without a device no circuit is
/// shorter.
///
/// With a device every CNOT is on one of its edges; std::invalid_argument unless it is connected
/// and has a vertex a qubit. One greedy run is made even with no effort at all. That the tableau is
/// one of a Clifford operator is not checked: the circuit of another one acts otherwise.
///
/// Memory: tables of 45 MB for the process, built in a second or two when they are first used.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> search_clifford_synthesis(
    const structures::OperatorTableau& tableau, std::vector<int>& wires, bool in_place,
    const SearchEffort& effort = {}, const structures::Graph* device = nullptr);

/// A circuit of few CNOTs that makes of zeros the stabilizer state that the operator makes of them,
/// up to a global phase. It takes about a quarter of the gates of the operator.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> search_state_synthesis(
    const structures::OperatorTableau& tableau, const SearchEffort& effort = {});

}  // namespace synthesis
