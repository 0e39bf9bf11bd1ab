#pragma once

#include <functional>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"

namespace zelt::braidwerk::internal {

/// Fills in the neighbours of a vertex, a bit each. A graph given this way need not be in memory.
using Neighbours = std::function<void(int vertex, Word* row)>;
using Colouring = std::vector<std::vector<int>>;

/// Visits the vertices in the order given; each takes the smallest colour that is free.
Colouring colour_in_order(const std::vector<int>& order, const Neighbours& neighbours);

/// In the order of falling number of neighbours with a lower number.
Colouring colour_by_degree(int n, const Neighbours& neighbours);

/// In the order of falling degree among the vertices left.
Colouring colour_by_degree_left(const BitMatrix& graph);

/// The rows of a frame in groups that commute pairwise: colour_by_degree.
Colouring commuting_groups(const PauliFrame& frame);

}  // namespace zelt::braidwerk::internal
