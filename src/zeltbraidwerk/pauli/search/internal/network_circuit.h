#pragma once

#include <vector>

#include "zeltbraidwerk/pauli/internal/rotations.h"
#include "zeltbraidwerk/pauli/search/internal/network.h"

/// \file
/// Networks of labelled gates on their way to circuits and back. Labels leave out what gates do on
/// one wire, and signs; here they come in.

namespace zelt::braidwerk::internal {

/// H, S and RX by pi/2, CNOT and rotations, as the events tell. Row r turns by rotations.params[r].
/// A network that closes is followed by what its gates leave on single wires of the target.
std::vector<structures::Gate> circuit_of(const Network& network, const Rotations& rotations,
                                         const NetworkTask& task, bool closes);

/// The operator with these images of X, then Z, on all qubits.
CliffordTarget target_of(PauliFrame images);

/// The gates on two qubits of a Clifford circuit, which holds CNOT alone of these.
std::vector<Gate> labelled(const std::vector<structures::Gate>& circuit, int qubits);

}  // namespace zelt::braidwerk::internal
