#pragma once

#include <vector>

#include "zeltbraidwerk/clifford/search/internal/search.h"
#include "zeltbraidwerk/pauli/search/internal/network_problem.h"
#include "zeltbraidwerk/search/internal/effort.h"

namespace zelt::braidwerk::internal {

/// Gates behind a network after which every label stands for a label: qubit q on wire wires[q].
struct NetworkTail {
  std::vector<Gate> gates;
  std::vector<int> wires;
};

/// Undoes the gates of a network, given what its labels stand for at its end: in place, or with the
/// qubits on any wires, with gates on the edges of the graph where there is one. Takes one greedy
/// run at least.
NetworkTail close_tail(const LabelFrame& frame, Outputs outputs, const BitGraph* graph,
                       std::uint64_t seed, const Effort& effort);

/// The same by the gates of the network backward.
NetworkTail undo(const std::vector<NetworkEvent>& events, int qubits);

/// Swaps that it takes to bring every qubit back to its own wire.
int swaps_of(const std::vector<int>& wires);

/// Brings every qubit back to its own wire. A swap behind a gate on the same wires costs one gate
/// more, as both together are two gates, and what comes later has its wires renamed; three where
/// there is no such gate. The best of some random ways.
void take_in_swaps(std::vector<NetworkEvent>& events, std::vector<int> wires, Rng& rng);

}  // namespace zelt::braidwerk::internal
