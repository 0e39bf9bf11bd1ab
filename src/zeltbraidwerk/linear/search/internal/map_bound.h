#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/linear/search/internal/device_rewriter.h"
#include "zeltbraidwerk/search/internal/effort.h"

namespace zelt::braidwerk::internal {

/// What every CNOT circuit of an invertible matrix takes, outputs in their places or on any wires.
///
/// Gates. Call two wires joined when a gate is on both, directly or over others. Entry (r, c) joins
/// input c and output r, so a block of the matrix is within one group of joined wires, and a group
/// of s wires takes s - 1 gates. A row that is no input as it came in is on a wire that is the
/// target of a gate, and each gate has one target; a column that does not go to one output alone
/// leaves a wire that is the control of one. So a block of k wires with `a` such rows and `b` such
/// columns takes max(k - 1, a, b) gates if no other block is joined with it. Where a group holds
/// several blocks it takes max(s - 1, sum of a, sum of b), and this is less than the sum over its
/// blocks, by one, only where each takes k gates, some for their rows and others for their columns
/// alone.
///
/// Layers. In d layers an output comes to hold at most 2^d inputs, an input to reach at most 2^d
/// outputs; this holds for the inverse as well, whose circuit is the same backwards. One layer
/// joins pairs alone, and with a wire that has to be both control and target there are two. A layer
/// has at most n / 2 gates.
///
/// With outputs in their places the bounds of cuts hold as well (cut_bound.h): for a dense matrix
/// nearly 2 gates per wire. On up to four wires both are exact, by tables.
LowerBound bound_of_map(const BitMatrix& m, bool exact);

/// The same on the edges of a connected graph, where outputs may be `reach` edges from their
/// places. A gate, or a layer, carries what is on a wire no farther than one edge: output r is at
/// least as many from input c as they are apart, less the reach. With outputs in their places, the
/// wires of a block are joined over as many edges as the farthest two of them are apart, and the
/// cuts of the graph bound both (cut_bound.h): dense matrices take about n^2 / 2 gates and n layers
/// on a line.
LowerBound bound_of_map_on_device(const BitMatrix& m, const BitGraph& graph, int reach);

/// What it takes to bring together what is on several of `n` wires, on any one of them: a gate for
/// each wire but one, and a layer at most doubles the wires brought together; on a graph no fewer
/// gates than two of the wires are apart, and no fewer layers than the farthest is from where they
/// meet. Null for all pairs of wires.
LowerBound bound_of_gathering(const std::vector<int>& wires, const Distances* distances, int n);

}  // namespace zelt::braidwerk::internal
