#pragma once

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/phase/internal/phase_circuit.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/placed_circuit.h"
#include "zeltbraidwerk/search/internal/task.h"

namespace zelt::braidwerk::internal {

/// A phase circuit of few CNOTs in which every parity, one column each, stands on some wire at some
/// time. Zero columns are left out. Wires are in place where the end is left open. By depth: of the
/// circuits found on the way the one of fewest layers.
///
/// One greedy run whatever the effort; then in turns a beam that grows networks, each time a wider
/// one, and a walk over the windows of the best circuit, until the effort ends.
///
/// Memory: 16 bytes for a parity and 32 for a wire, for each state of a beam and word of wires.
Placed<PhaseStep> search_parities(const BitMatrix& parities, const Task& task,
                                  const Effort& effort);

}  // namespace zelt::braidwerk::internal
