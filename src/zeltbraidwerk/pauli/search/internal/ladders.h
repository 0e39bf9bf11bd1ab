#pragma once

#include <vector>

#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/pauli/search/internal/network_problem.h"

namespace zelt::braidwerk::internal {

/// Each rotation alone: gates that gather its string on one wire, and the same gates backward. On
/// a graph all gates are on edges.
std::vector<Gate> ladders(const RotationList& list, const BitGraph* graph);

/// Takes out pairs of equal gates between which all events commute with them.
void cancel_pairs(std::vector<NetworkEvent>& events);

}  // namespace zelt::braidwerk::internal
