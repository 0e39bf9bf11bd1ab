#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/phase/internal/phase_circuit.h"
#include "zeltbraidwerk/phase/synthesize.h"

namespace zelt::braidwerk::internal {

struct PhaseStepsResult : synthesis::SynthesisResult {
  std::vector<PhaseStep> steps;
};

/// synthesize_phase of packed parities: one row per qubit, one column per term, none of them zero.
PhaseStepsResult synthesize_phase(const BitMatrix& parities,
                                  const synthesis::PhaseOptions& options);

}  // namespace zelt::braidwerk::internal
