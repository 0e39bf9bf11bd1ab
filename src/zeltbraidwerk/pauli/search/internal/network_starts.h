#pragma once

#include <optional>
#include <vector>

#include "zeltbraidwerk/pauli/search/internal/network.h"
#include "zeltbraidwerk/pauli/search/internal/network_run.h"

namespace zelt::braidwerk::internal {

/// A greedy run by a plan, closed with no more effort than it takes. Nothing where the effort ended
/// before, unless it is to be finished whatever the effort.
std::optional<Network> run_greedily(const NetworkRun& run, const NetworkPlan& plan,
                                    bool whatever_effort);

/// The rotations in groups on the same qubits, one group after the other, which is hard to beat
/// where strings are light; by depth also in the layers of a colouring of the groups. By count none
/// where its ladders alone take twice as many gates as `shortest`.
std::vector<Network> run_ladders(const NetworkRun& run, int shortest);

}  // namespace zelt::braidwerk::internal
