#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"

namespace zelt::braidwerk::internal {

struct HamiltonianSearch {
  enum Outcome { found, none, unfinished };
  Outcome outcome;
  std::vector<int> path;  ///< empty unless found
};

/// A path through all vertices along edges, by depth-first search that prefers vertices with few
/// ways out (H. C. von Warnsdorff, 1823) and turns back where the rest is cut off. Exact and the
/// same every time, but for a deadline or the cap of control.max_operations steps; exponential at
/// worst. The empty graph has the empty path.
HamiltonianSearch find_hamiltonian_path(const BitGraph& graph, const Control& control);

/// Turns a Hamiltonian path into another one by random rotations: an end joined to a vertex amid
/// the path hangs the stretch between them on the other way round. L. Pósa, "Hamiltonian circuits
/// in random graphs", Discrete Mathematics 14 (1976) 359.
void vary_hamiltonian_path(const BitGraph& graph, std::vector<int>& path, const Draw& draw);

}  // namespace zelt::braidwerk::internal
