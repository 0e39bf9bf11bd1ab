#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/internal/clifford_gate.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"

namespace zelt::braidwerk::internal {

/// The circuit on the edges of a connected device at once, long as it may be: CNOTs along a
/// shortest path stand for one between its ends, and exchange qubits there and back around any
/// other gate.
/// @{
std::vector<structures::Gate> along_edges(const std::vector<structures::Gate>& gates,
                                          const BitGraph& device);
std::vector<CliffordGate> along_edges(const std::vector<CliffordGate>& gates,
                                      const BitGraph& device);
/// @}

}  // namespace zelt::braidwerk::internal
