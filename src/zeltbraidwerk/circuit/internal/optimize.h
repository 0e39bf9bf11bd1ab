#pragma once

#include <vector>

#include "zeltbraidwerk/circuit/internal/steps.h"
#include "zeltbraidwerk/circuit/optimize.h"
#include "zeltbraidwerk/circuit/search/internal/alternation.h"

namespace zelt::braidwerk::internal {

/// A result whose circuits are still steps.
struct FoundSteps : synthesis::SynthesisResult {
  synthesis::CircuitCounts before;   ///< the size of the given circuit
  std::vector<StagedCircuit> found;  ///< the result; by depth, the others of the front after it
};

/// optimize_circuit for a circuit that is read already.
FoundSteps optimize_steps(StepCircuit given, const synthesis::OptimizeOptions& options);

/// The stages of a circuit, the last one itself. Of stages of exact rewriting that follow each
/// other, the last one tells as much.
std::vector<const Stage*> stages_of(const StagedCircuit& circuit);

/// What the log of a stage lists.
std::vector<synthesis::OptimizeStep> log_of(const Stage& stage);

}  // namespace zelt::braidwerk::internal
