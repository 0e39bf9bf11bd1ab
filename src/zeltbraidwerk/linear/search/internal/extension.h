#pragma once

#include <cstdint>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A circuit of a dense map with its outputs anywhere, made wire by wire.
///
/// Exchanges of outputs and inputs lead down to a core (exchanged_map.h), whose circuit is found by
/// a beam and a walk. Then they come back, a wire at a time: it first receives a parity of the
/// other wires, then it sends to some outputs. There are many parities to receive from in the first
/// part of the circuit, and many effects that one gate can have in the second. The lightest sets of
/// them are found by decoding (light_sums.h), for all rows and columns that can come back at once,
/// with several divisions of the circuit in two parts; those that take the fewest gates together
/// come back. A walk follows each wire.
///
/// Up to LightSums::most_dimensions wires. The circuit is made in about `steps` steps; it has no
/// gates where the effort ends before.
GateList extend_wire_by_wire(const BitMatrix& m, std::uint64_t steps, int window, Rng& rng,
                             Meter& meter);

}  // namespace zelt::braidwerk::internal
