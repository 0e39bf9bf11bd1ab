#pragma once

#include <memory>
#include <vector>

#include "zeltbraidwerk/circuit/internal/steps.h"
#include "zeltbraidwerk/circuit/search/internal/circuit_search.h"
#include "zeltbraidwerk/circuit/two_wire/internal/two_wire_windows.h"

namespace zelt::braidwerk::internal {

/// How a circuit came about: exact rewriting of the one before, or windows replaced by numbers,
/// which the log tells.
struct Stage {
  std::shared_ptr<const Stage> before;  ///< none: the given circuit
  StepCircuit circuit;                  ///< of exact rewriting
  std::vector<int> wires;               ///< where each qubit of the given circuit stands at the end
  std::vector<structures::Gate> gates = {};  ///< with a log: by which it numbers them
  std::vector<WindowStep> log = {};
  double phase = 0;  ///< with a log: exp(i phase) times this circuit is the one before
};

struct StagedCircuit {
  StepCircuit circuit;
  std::vector<int> wires;              ///< where each qubit stands at the end
  std::shared_ptr<const Stage> stage;  ///< the last one
  CircuitSize size;
};

/// A circuit as the first stage: the numbers of a log are those of its gates.
StagedCircuit as_given(const StepCircuit& circuit);

/// Whether a rotation is by a number that is no multiple of pi/4: windows are for
/// circuits of such rotations.
bool has_generic_rotations(const StepCircuit& circuit);

/// The better of an exact search, and of one that searches exactly and in turns replaces windows
/// on two and three wires by circuits of few CNOTs for their operators: each for half the effort.
/// With `keep_rotations`, windows never have more rotations than before.
StagedCircuit search_alternating(const StepCircuit& circuit, bool keep_rotations,
                                 const CircuitTask& task, const Effort& effort);

/// Exactly alone.
StagedCircuit search_exactly(const StepCircuit& circuit, const CircuitTask& task,
                             const Effort& effort);

}  // namespace zelt::braidwerk::internal
