#pragma once

#include <cstdint>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A circuit of a dense invertible map with its outputs anywhere, by elimination of one block of
/// wires after the other (C. F. Gauss and W. Jordan, by blocks).
///
/// A block is worked on by a short circuit of its own, a Schur complement, that is searched for.
/// All other wires receive a parity of the block. On the way the circuit passes many parities: the
/// fewest that sum up to what a wire receives are found by decoding (light_sums.h). A wire whose
/// turn to be in a block is still to come may pass on what it lacks, at any moment between its own
/// gates: what it is by then is made up for when its block comes. So the parities become more with
/// every wire.
///
/// The circuit is made in about `steps` steps; it has no gates where the effort ends before.
GateList eliminate_by_decoding(const BitMatrix& m, std::uint64_t steps, int window, Rng& rng,
                               Meter& meter);

}  // namespace zelt::braidwerk::internal
