#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/placed_circuit.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A list of gates and its last one-qubit gates as a circuit of CNOT, and H, S, RX by pi/2,
/// whatever signs it has: after it the images of X and Z on qubit q are those of the operator with
/// letter r on wire wires[r].
CliffordCircuit emitted(const GateList& list);

/// The same and X, Y, Z, so that signs are those of the images of X, then of Z, that the operator
/// has. At most one one-qubit gate on either wire before a CNOT.
CliffordCircuit to_circuit(const GateList& list, const PauliFrame& images);

/// The way back, signs left out, from CNOTs and gates on one wire.
/// @{
GateList to_list(const std::vector<structures::Gate>& circuit, int wires);
GateList to_list(const std::vector<CliffordGate>& circuit, int wires);
/// @}

}  // namespace zelt::braidwerk::internal
