#pragma once

#include <optional>
#include <vector>

#include "zeltbraidwerk/pauli/search/internal/network.h"
#include "zeltbraidwerk/search/synthesis_options.h"

namespace zelt::braidwerk::internal {

/// A circuit of CNOTs and gates on one qubit as the network of a task, for a search to begin from:
/// row r of `rows` turns by angles[r]. Nothing unless the circuit holds each rotation once, with
/// its sign and its angle modulo 2 pi, in an order that the task allows, has CNOTs on edges of its
/// device alone, and after the rotations is what the task asks for. Rotations of equal strings and
/// angles are taken in the order of their rows; one by a multiple of pi/2 that is none of the rows
/// counts as a Clifford gate. Identity rows are left out.
///
/// Throws std::logic_error for a gate that is neither a Clifford gate nor a rotation.
std::optional<Network> known_network(const synthesis::KnownCircuit& known, const PauliFrame& rows,
                                     const std::vector<structures::Parameter>& angles,
                                     const NetworkTask& task);

}  // namespace zelt::braidwerk::internal
