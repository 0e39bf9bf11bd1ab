#pragma once

#include <vector>

#include "zeltbraidwerk/pauli/search/internal/rotation_list.h"

namespace zelt::braidwerk::internal {

/// Rows of a list whose strings have letters on the same qubits, ascending in time.
using RotationGroup = std::vector<int>;

/// The rows of a list in groups, to be served one group after the other. In order, rotations that
/// clash keep their order, and those share a group that exchanges of commuting rotations bring
/// together; otherwise all with the same qubits do. Takes time of rows times groups at most.
std::vector<RotationGroup> groups_of(const RotationList& list, bool in_order);

/// The groups in another order that is as good: by layers of groups that commute, each as early as
/// it can be, and in a layer so that groups on disjoint qubits follow each other: pairs by an edge
/// colouring, then the wider ones.
std::vector<RotationGroup> by_layers(const RotationList& list, std::vector<RotationGroup> groups,
                                     bool in_order);

/// The qubits with letters.
std::vector<int> qubits_of(const RotationList& list, int row);

}  // namespace zelt::braidwerk::internal
