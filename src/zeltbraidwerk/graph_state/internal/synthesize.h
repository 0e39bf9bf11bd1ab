#pragma once

#include "zeltbraidwerk/clifford/internal/synthesize.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graph_state/synthesize.h"

namespace zelt::braidwerk::internal {

/// synthesize_graph_state for a packed graph.
FoundCliffords synthesize_graph_state(const BitMatrix& graph,
                                      const synthesis::GraphStateOptions& options);

}  // namespace zelt::braidwerk::internal
