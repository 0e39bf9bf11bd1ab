#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/phase/internal/phase_circuit.h"
#include "zeltbraidwerk/search/internal/task.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// The columns that have to be made, each once: those of more than one wire.
BitMatrix parities_to_make(const BitMatrix& parities);

/// The gates, and the phase of every column where its parity first stands on a wire.
std::vector<PhaseStep> with_phases(const std::vector<Gate>& gates, const BitMatrix& parities);

/// Whether the list does what the task asks for: every parity, one column each, stands on some wire
/// at some time, and outputs are where the list says, or in their places.
bool shows_all(const GateList& list, const BitMatrix& parities, const Task& task);

}  // namespace zelt::braidwerk::internal
