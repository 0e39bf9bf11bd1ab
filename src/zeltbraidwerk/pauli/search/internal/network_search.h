#pragma once

#include <cstdint>
#include <vector>

#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/pauli/internal/rotations.h"
#include "zeltbraidwerk/search/internal/effort.h"

namespace zelt::braidwerk::internal {

/// What becomes of the Clifford gates of a network.
enum class NetworkEnd {
  open,           ///< they stay: a Clifford operator behind the rotations
  closed,         ///< undone, every qubit on its own wire
  closed_freely,  ///< undone, the qubits on any wires
};

struct NetworkOptions {
  bool in_order = false;  ///< rotations that clash keep their order; otherwise any order will do
  NetworkEnd end = NetworkEnd::closed;
  const BitGraph* graph = nullptr;  ///< wires that may meet, connected; null for all
  bool by_depth = false;
  std::uint64_t seed = 0;
  std::uint64_t stream = 0;
};

struct NetworkResult {
  std::vector<structures::Gate> gates;
  std::vector<int> wires;  ///< where each qubit stands at the end
  int count = 0;           ///< gates on two qubits
  int depth = 0;           ///< layers of these
};

/// A short circuit of rotations. Identity strings are left out.
///
/// Greedy runs and ladders of rotations on the same qubits, so that on all pairs of wires no list
/// takes more gates than these, nor more layers than an edge colouring of them; then walks, and
/// beams from the start and from random gates of the best circuit so far, with random costs. Lists
/// in layers that are diagonal in some basis of each qubit, and long enough, are searched layer by
/// layer, as networks of parities. The first runs are finished whatever the effort. Throws
/// std::invalid_argument for a graph that is not connected or has another number of wires.
NetworkResult search_network(const Rotations& rotations,
                                                         const NetworkOptions& options,
                                                         const Effort& effort);

}  // namespace zelt::braidwerk::internal
