#pragma once

#include <optional>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/phase/search/internal/growth.h"
#include "zeltbraidwerk/search/internal/beam.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// Circuits that a walk can begin with: networks, and what undoes their maps. With a graph, gates
/// are on its edges.

using ParityNetwork = std::vector<Gate>;

/// Complete networks, shortest first; none where the effort ended before, or the beam in circles.
std::vector<ParityNetwork> grow_networks(const BitMatrix& parities, const BitGraph* graph,
                                         const GrowthCost& cost, const BeamOptions& options,
                                         Rng& rng, Meter& meter);

/// A network by the plain methods. Always ends.
ParityNetwork plain_network(const BitMatrix& parities, const BitGraph* graph, Rng& rng);

/// The network and after it a circuit that undoes its map, found by a beam of that width; outputs
/// where they like, but on a graph in their places. Nothing where the effort ended before.
std::optional<GateList> closed(const ParityNetwork& network, int n, const BitGraph* graph,
                               int width, Rng& rng, Meter& meter);

/// The same by the plain methods, outputs in their places. Always ends.
GateList closed_plainly(const ParityNetwork& network, int n, const BitGraph* graph, Rng& rng);

/// The same operator with its outputs in their places, not on a graph.
GateList in_place(const GateList& list, Rng& rng);

}  // namespace zelt::braidwerk::internal
