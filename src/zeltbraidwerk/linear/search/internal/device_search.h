#pragma once

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/task.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A short CNOT circuit of an invertible matrix on the edges of the device: what
/// eliminations by rows and columns find, then beams of them, ever wider, and walks from the best,
/// ever longer. Wire w of the result has output frame.output_on(w).
///
/// There is always a circuit, whatever the effort: one elimination without a search.
GateList search_cnot_on_device(const BitMatrix& m, const Task& task, const Effort& effort);

}  // namespace zelt::braidwerk::internal
