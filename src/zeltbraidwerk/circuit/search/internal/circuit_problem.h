#pragma once

#include <vector>

#include "zeltbraidwerk/circuit/internal/steps.h"
#include "zeltbraidwerk/pauli/search/internal/network.h"

namespace zelt::braidwerk::internal {

/// A circuit as a network of its own rotations that closes to its own Clifford operator.
struct CircuitProblem {
  PauliFrame rows;        ///< the string of each rotation before the circuit, sign included
  CliffordTarget target;  ///< the operator of the Clifford steps
  Network given;          ///< the circuit itself
  bool has_cz = false;    ///< its steps are written with CZ where that is shorter
};

CircuitProblem problem_of(int qubits, const std::vector<Step>& steps);

/// The events of steps that serve the same rotations.
std::vector<NetworkEvent> events_of(int qubits, const std::vector<Step>& steps);

/// The steps of a network for the problem, with what its gates leave on single wires of the target.
std::vector<Step> steps_of(const Network& network, const CircuitProblem& problem);

}  // namespace zelt::braidwerk::internal
