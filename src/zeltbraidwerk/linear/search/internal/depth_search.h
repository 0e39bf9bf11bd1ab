#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/linear/search/internal/depth_front.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/task.h"

namespace zelt::braidwerk::internal {

/// CNOT circuits of an invertible matrix with few layers: first the best by depth, then by gates,
/// then others with fewer and fewer gates. No other circuit has at most the layers and at most the
/// gates of one of them. Wire w holds row list.frame.output_on(w) of the matrix at the end; with
/// outputs in place that is row w.
///
/// Layers of disjoint additions taken off from both sides, greedily and with wider and wider beams,
/// from 24 wires on block recursion, from 28 to 256 with searched steps, and between these rounds
/// of annealing on windows, for different prices of a gate in layers, longer and longer. The greedy
/// run is always finished. A singular matrix has no circuit; for one the result is what elimination
/// makes of it.
///
/// Memory: a few hundred MB at most, of which 130 MB tables of windows.
std::vector<LayeredCircuit> search_shallow_cnot(const BitMatrix& m, const Task& task,
                                                const Effort& effort);

}  // namespace zelt::braidwerk::internal
