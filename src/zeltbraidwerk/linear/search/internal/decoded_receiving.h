#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/linear/search/internal/passing_vectors.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// A wire outside of a block: the end of the gates by which it receives, and the end by which it
/// passes on what it lacks, where it may.
struct Receiver {
  End by;
  std::optional<End> passes_on;
};

/// Puts the gates by which wires outside of a block receive what they lack, a row for each wire,
/// among those of the block, after about so many steps of decoding.
///
/// The fewest vectors that sum up to what a wire lacks are found by decoding (light_sums.h). A wire
/// that passes on what it lacks does so at any moment between its own gates: so there are more
/// vectors with every wire. The first vectors that the block holds are the unit vectors, of
/// LightSums::most_dimensions at most. False where spend(steps) was, before the end.
bool receive_by_decoding(PassingVectors& passing, const BitMatrix& lacking,
                         const std::vector<Receiver>& receivers, double steps, Rng& rng,
                         const std::function<bool(double)>& spend);

}  // namespace zelt::braidwerk::internal
