#pragma once

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/graph_state/graph_state.h"

namespace zelt::braidwerk::internal {

/// Appends a circuit that solves the graph. When the control ends it, the rest goes without
/// restarts: the circuit solves the graph all the same.
void synthesise_graph_state(const BitMatrix& graph, TripleCircuit& circuit, int tries,
                            const Draw& draw, const Control& control);

}  // namespace zelt::braidwerk::internal
