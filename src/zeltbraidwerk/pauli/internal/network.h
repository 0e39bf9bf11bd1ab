#pragma once

#include <functional>
#include <vector>

#include "zeltbraidwerk/graphs/graph.h"
#include "zeltbraidwerk/pauli/internal/rotations.h"

/// \file
/// Products of Pauli rotations in a given order, and their circuits with nothing left to undo.

namespace zelt::braidwerk::internal {

/// A circuit in which every row comes up once, in whatever order; its other gates are a Clifford
/// operator that stays.
using Synthesis = std::function<std::vector<structures::Gate>(Rotations)>;

/// Each rotation alone: its letters turned into Z, a ladder of CNOTs to the last of them and back.
/// Keeps the order of the rows; 2 (weight - 1) CNOTs a row, and no Clifford operator that stays.
std::vector<structures::Gate> synthesise_ladders(const Rotations& rotations);

/// Commuting sets on a device: every CNOT on an edge of the graph, whose shortest paths are set.
std::vector<structures::Gate> synthesise_open_sets_on_graph(Rotations rotations,
                                                            structures::Graph& graph);

/// Rows in layers, each after the last one that holds an earlier row with which it does not
/// commute. So the rows of a layer commute, and the layers one after the other are the product of
/// the rows in their order. O(rows^2 * qubits / 64).
std::vector<std::vector<int>> layers_in_order(const PauliFrame& frame);

/// The product of the rows in their order, each layer by the synthesis.
std::vector<structures::Gate> synthesise_in_order(Rotations rotations, const Synthesis& synthesis);

}  // namespace zelt::braidwerk::internal
