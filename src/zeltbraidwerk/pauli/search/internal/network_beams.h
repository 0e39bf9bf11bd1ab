#pragma once

#include <optional>
#include <vector>

#include "zeltbraidwerk/pauli/search/internal/network.h"
#include "zeltbraidwerk/pauli/search/internal/network_run.h"

namespace zelt::braidwerk::internal {

/// The gates of a network up to a random one.
std::vector<Gate> random_prefix(const Network& network, Rng& rng);

/// The best of a beam after the gates of `prefix`, with its tail. Nothing where the beam finds none
/// or the effort ended before.
std::optional<Network> run_beam(const NetworkRun& run, const NetworkPlan& plan,
                                const std::vector<Gate>& prefix, int width);

/// The same by a relay, with `runs` runs from every place. `known`: gates of a known network.
std::optional<Network> run_relay(const NetworkRun& run, const std::vector<Gate>& prefix, int runs,
                                 int width, int known);

}  // namespace zelt::braidwerk::internal
