#pragma once

#include "zeltbraidwerk/clifford/synthesize.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/runs.h"

namespace zelt::braidwerk::internal {

/// synthesize_clifford for the images of X, then of Z, on all qubits. Throws std::invalid_argument
/// for images of no operator.
synthesis::CliffordResult synthesize_clifford(const PauliFrame& images,
                                              const synthesis::CliffordOptions& options);

/// synthesize_state for signed stabilisers. Throws std::invalid_argument for others.
synthesis::StateResult synthesize_state(const PauliFrame& stabilisers,
                                        const synthesis::StateOptions& options);

/// The runs of the search for a state; their circuits are lists of gates. `stabilisers` outlives
/// the lane.
Lane state_search_lane(const PauliFrame& stabilisers, const synthesis::SynthesisOptions& options,
                       RunControl& control);

/// Throws std::invalid_argument for a device, and for outputs that are not in place.
void check_state_options(const synthesis::SynthesisOptions& options);

}  // namespace zelt::braidwerk::internal
