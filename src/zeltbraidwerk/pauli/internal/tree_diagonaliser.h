#pragma once

#include <span>
#include <vector>

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/graphs/graph.h"

namespace zelt::braidwerk::internal {

/// The one letter other than I on a qubit, 0 where there is none, -1 where there are more.
int single_letter(const PauliFrame& frame, int q);

/// The qubits, of those listed, on which a row has a letter other than I.
std::vector<int> support_on(const PauliFrame& frame, int row, std::span<const int> qubits);

/// Co-diagonalises the rows of a frame along a spanning tree of the graph, leaf after leaf: some
/// row is gathered on the leaf, which is then cut off and never touched again. So it ends after at
/// most n leaves and n^2 CNOTs.
void diagonalise_on_tree(PauliFrame& frame, const structures::Graph& graph,
                         std::vector<structures::Gate>& circuit);

}  // namespace zelt::braidwerk::internal
