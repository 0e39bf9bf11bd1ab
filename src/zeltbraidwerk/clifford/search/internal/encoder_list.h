#pragma once

#include "zeltbraidwerk/clifford/search/internal/code.h"
#include "zeltbraidwerk/clifford/search/internal/state_group.h"
#include "zeltbraidwerk/search/internal/placed_circuit.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// \file
/// Encoders as lists of gates: the logical qubits come in on wires 0 to k-1, zeros on the others.

/// The circuit of a plain elimination: the lightest stabiliser loses one letter after the other.
GateList eliminated_code(StateGroup group);

/// What the first gates of a list encode into, with its logical operators where `logicals` is set.
Code code_after(const GateList& list, int count, int logical_qubits, bool logicals);

/// The encoder with a circuit on its logical inputs put before it, so that they become the logical
/// operators that are wanted.
GateList with_logicals(const GateList& encoder, const PauliFrame& logicals, Rng& rng);

/// The images of X, then of Z, on all wires under an operator that encodes as the list does, signs
/// left out. Each change is a random one of the generators and of what they leave free.
PauliFrame images_with_other_gauge(const GateList& encoder, int logical_qubits, int changes,
                                   Rng& rng);

struct EncoderCircuit : CliffordCircuit {
  std::vector<int> logical_wires;  ///< logical qubit i comes in on wire logical_wires[i]
};

/// The circuit of CNOTs and gates on one qubit, every qubit of the code on its own wire. X and Z
/// come first that give stabilisers and logical operators their signs.
EncoderCircuit encoder_circuit(const GateList& list, const Code& code);

/// The circuit of CNOTs and gates on one qubit that makes a state of zeros, its qubits on the wires
/// where the list has them. X comes first that gives stabilisers their signs.
CliffordCircuit state_circuit(const GateList& list, const PauliFrame& stabilisers);

}  // namespace zelt::braidwerk::internal
