#pragma once

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/placed_circuit.h"
#include "zeltbraidwerk/search/internal/task.h"

namespace zelt::braidwerk::internal {

/// search_state with gates on the edges of the task's device alone. With outputs anywhere the
/// qubits of the state stand on those wires of the device that suit them.
///
/// A plain elimination along a tree, and on up to 20 qubits a greedy run, whatever the effort; then
/// walks on windows of edges, on up to 64 qubits in turns with beams from other placements and new
/// beginnings of the circuit. A greedy run on n qubits takes about (n / 64)^4 seconds, a state of a
/// beam a hundred bytes per qubit; weights on up to 16 qubits one byte per set of them.
CliffordCircuit search_state_on_device(const PauliFrame& stabilisers, const Task& task,
                                       const Effort& effort);

}  // namespace zelt::braidwerk::internal
