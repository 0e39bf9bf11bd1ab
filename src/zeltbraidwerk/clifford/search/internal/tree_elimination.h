#pragma once

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A circuit for a state on the edges of a connected device, qubits in place, at once: wire after
/// wire, leaves of a tree first, a generator is brought down to one letter along the tree. At most
/// 2 n gates for each wire; time n^3 / 64.
GateList eliminated_on_device(const PauliFrame& stabilisers, const BitGraph& device);

}  // namespace zelt::braidwerk::internal
