#pragma once

#include <optional>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/phase/search/internal/growth.h"
#include "zeltbraidwerk/search/internal/beam.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// Circuits that a walk can begin with: networks, and what closes them.

using Network = std::vector<Gate>;

/// Complete networks, shortest first; none where the effort ended before, or the beam in circles.
std::vector<Network> grow_networks(const BitMatrix& parities, const GrowthCost& cost,
                                   const BeamOptions& options, Rng& rng, Meter& meter);

/// A network by the plain methods, in the order of the wires. Always ends.
Network plain_network(const BitMatrix& parities, const BitGraph* graph, Rng& rng);

/// The network and behind it a circuit that undoes its map, outputs where they like. Nothing where
/// the effort ended before.
std::optional<GateList> closed_freely(const Network& network, int n, int width, Rng& rng,
                                      Meter& meter);

/// The same by the plain methods, outputs in their places unless `free`. Always ends.
GateList closed_plainly(const Network& network, int n, const BitGraph* graph, bool free, Rng& rng);

/// The same operator with its outputs in their places.
GateList in_place(const GateList& list, Rng& rng);

}  // namespace zelt::braidwerk::internal
