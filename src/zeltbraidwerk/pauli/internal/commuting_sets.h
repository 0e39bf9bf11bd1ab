#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/pauli/internal/rotations.h"

namespace zelt::braidwerk::internal {

/// The circuit of commute_pauli_synth.
std::vector<structures::Gate> synthesise_sets(const Rotations& rotations, int method,
                                              const Draw& draw);

/// The circuit of commute_pauli_synth_improved, with its demands on the angles.
std::vector<structures::Gate> synthesise_open_sets(Rotations rotations, int method,
                                                   const Draw& draw);

void append_reversed(std::vector<structures::Gate>& target,
                     const std::vector<structures::Gate>& source);

}  // namespace zelt::braidwerk::internal
