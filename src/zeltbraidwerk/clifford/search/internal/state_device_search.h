#pragma once

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/placed_circuit.h"
#include "zeltbraidwerk/search/internal/task.h"

namespace zelt::braidwerk::internal {

/// search_state with gates on the edges of the task's device alone. With outputs anywhere the
/// qubits of the state stand on those wires of the device that suit them.
///
/// One greedy run whatever the effort, above 64 qubits a plain elimination along a tree; then beams
/// from other placements, walks on windows of edges, and new beginnings of the circuit in turns.
PlacedCircuit search_state_on_device(const PauliFrame& stabilisers, const Task& task,
                                     const Effort& effort);

}  // namespace zelt::braidwerk::internal
