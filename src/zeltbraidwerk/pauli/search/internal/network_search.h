#pragma once

#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/pauli/internal/rotations.h"
#include "zeltbraidwerk/pauli/search/internal/network.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/placed_circuit.h"

namespace zelt::braidwerk::internal {

/// A short circuit of rotations. Identity strings are left out.
///
/// Greedy runs and ladders of rotations on the same qubits, so that on all pairs of wires no list
/// takes more gates than these, nor more layers than an edge colouring of them; then walks, and
/// beams from the start and from random gates of the best circuit so far, with random costs. Lists
/// in layers that are diagonal in some basis of each qubit, and long enough, are searched layer by
/// layer, as networks of parities. The first runs are finished whatever the effort. Throws
/// std::invalid_argument for a graph that is not connected or has another number of wires.
PlacedCircuit search_network(const Rotations& rotations, const NetworkTask& task,
                             const Effort& effort);

/// The same as events, for part of a list: an open end is not searched as closed as well.
Network search_events(const Rotations& rotations, const NetworkTask& task, const Effort& effort);

}  // namespace zelt::braidwerk::internal
