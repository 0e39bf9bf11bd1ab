#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/graphs/graph.h"
#include "zeltbraidwerk/pauli/pauli_table.h"
#include "zeltbraidwerk/search/search_effort.h"

namespace synthesis {

/// A circuit of few CNOTs, "H", "S", "RX" by pi/2 and a rotation "RX", "RY" or "RZ" a row, for the
/// product of the Pauli rotations of a table on n qubits, by search: row r turns by params[r].
/// With `in_order` rotations that do not commute keep their order, so that the product stays the
/// same; otherwise they may change places, as in a Trotter step. The Clifford gates are undone,
/// with `in_place` wholly; otherwise qubit q ends on wire wires[q].
///
/// Rows of I alone get no gate. With a device every CNOT is on one of its edges;
/// std::invalid_argument unless it is connected and has n vertices, and where a row has not n
/// letters. Some greedy runs are made even with no effort at all.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> search_pauli_synthesis(
    int n, const PauliTable& table, const std::vector<structures::Parameter>& params, bool in_order,
    std::vector<int>& wires, bool in_place, const SearchEffort& effort = {},
    const structures::Graph* device = nullptr);

}  // namespace synthesis
