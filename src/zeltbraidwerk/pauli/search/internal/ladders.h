#pragma once

#include <vector>

#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/pauli/search/internal/network_problem.h"
#include "zeltbraidwerk/pauli/search/internal/rotation_groups.h"

namespace zelt::braidwerk::internal {

/// Gates that serve one group after the other, between which every qubit is on its own wire again:
/// they gather strings on one wire, and the same gates follow backward. A pair takes two gates for
/// one or two strings and three for XX, YY and ZZ; on up to three wires the fewest are looked for.
/// With `shallow` a string is gathered in few layers. On a graph all gates are on edges; groups
/// have one string each.
std::vector<Gate> ladders(const RotationList& list, const std::vector<RotationGroup>& groups,
                          bool in_order, const BitGraph* graph, bool shallow);

/// Takes out pairs of equal gates between which all events commute with them.
void cancel_pairs(std::vector<NetworkEvent>& events);

}  // namespace zelt::braidwerk::internal
