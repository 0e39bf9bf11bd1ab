#pragma once

#include <vector>

#include "zeltbraidwerk/clifford/search/internal/graph_blocks.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"

namespace zelt::braidwerk::internal {

/// Takes away all edges of a large graph, wire after wire, in about n^2 / 2 log2(n) moves instead
/// of one for each edge: of the wires that are joined to the one in turn, those whose edges agree
/// on the longest stretch of the wires to come are added to each other, which leaves one of them
/// joined. (Elimination by pairs does so for maps, see pair_elimination.h.) A sum changes its own
/// wire's edges all along that stretch, so the wires whose turn is next are left out of it, and
/// their edges taken one by one.
///
/// There are none on the diagonal. Takes 0.4 us a move on 3000 wires.
std::vector<GraphMove> clear_by_sorting(BitMatrix edges);

}  // namespace zelt::braidwerk::internal
