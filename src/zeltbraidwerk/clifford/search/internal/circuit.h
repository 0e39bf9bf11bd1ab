#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A circuit of a Clifford operator. Its output q is on wire wires[q]: after the gates the images
/// of X and Z on qubit q are those of the operator with letter r on wire wires[r].
struct CliffordCircuit {
  std::vector<structures::Gate> gates;  ///< CNOT, and H, S, RX by pi/2, X, Y, Z
  std::vector<int> wires;
};

/// A list of gates and its last one-qubit gates as a circuit, whatever signs it has.
CliffordCircuit emitted(const GateList& list);

/// A list of gates and its last one-qubit gates as a circuit, signs those of the images of X, then
/// of Z, that the operator has. At most one one-qubit gate on either wire before a CNOT.
CliffordCircuit to_circuit(const GateList& list, const PauliFrame& images);

/// The way back, signs left out, from CNOTs and gates on one wire.
GateList to_list(const std::vector<structures::Gate>& circuit, int wires);

}  // namespace zelt::braidwerk::internal
