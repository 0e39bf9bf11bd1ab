#pragma once

#include <vector>

#include "zeltbraidwerk/circuit/internal/steps.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/task.h"

namespace zelt::braidwerk::internal {

struct CircuitTask : Task {
  int jobs = 1;         ///< threads for the pieces of a long circuit
  bool routes = false;  ///< the circuit is not on the edges of the device, its network is to be
  bool keeps_depth = false;  ///< no more layers than given; where it is not routed
};

struct CircuitFound {
  std::vector<Step> steps;
  std::vector<int> wires;  ///< where each qubit stands at the end
  CircuitSize size;
};

/// A shorter circuit of the same operator with the same rotations, never a longer one. Outputs are
/// in place or anywhere. With a device, the gates of the circuit are on its edges, or it is routed:
/// made anew on them, whatever the effort.
///
/// Small circuits are searched as networks of their rotations that close to their Clifford
/// operator, forward and, as inverse circuits, backward; all are walked from, the best so far, in
/// pieces where they are long. More effort is never worse.
CircuitFound search_circuit(int qubits, const std::vector<Step>& steps, const CircuitTask& task,
                            const Effort& effort);

}  // namespace zelt::braidwerk::internal
