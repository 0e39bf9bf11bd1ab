#pragma once

#include <cstdint>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

struct ExtensionOptions {
  int core = 30;                 ///< wires of the circuit to begin with
  std::uint64_t core_steps = 0;  ///< of the walk on it
  std::uint64_t wire_steps = 0;  ///< of the walk after each further wire
  int exchanges = 300;           ///< of the decoder, for each of both sums of a wire
  int splits = 5;                ///< moments tried for a wire to change from receiving to sending
};

/// A circuit by extension, outputs where they like: outputs and inputs are taken off in pairs, each
/// through an entry of the matrix that is a one, until a core is left. That one is reduced with a
/// wide beam. Then the wires are put back one by one. A wire first receives the parity of its
/// output, from wires that hold parts of it at some moment, and then is sent to all outputs that it
/// belongs to, through wires that pass it on; both are few by decoding.
///
/// Ends early, with an empty list, when the effort is spent. False then.
ZELTBRAIDWERK_KERNEL_EXPORT bool extend(const BitMatrix& m, const ExtensionOptions& options,
                                        Rng& rng, Meter& meter, GateList& list);

}  // namespace zelt::braidwerk::internal
