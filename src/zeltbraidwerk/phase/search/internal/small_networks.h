#pragma once

#include <optional>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/phase/search/internal/parity_search.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

struct SmallNetwork {
  int least = 0;                     ///< no network has fewer gates
  std::optional<GateList> shortest;  ///< one with that many, where one was found
};

/// The fewest gates of a network of parities, one column each, that is known to have at least
/// `least` and at most `most`, or, if that takes too long, a number in between that none has fewer
/// of: by breadth-first searches over the maps after the gates and the parities shown, one for each
/// number of gates. On up to six wires and 32 parities; elsewhere `least`.
///
/// A state is left out where too many gates would be needed from there on: one for each parity to
/// be shown, and, where the map is undone, one for each wire that holds no output that it may; and
/// for a parity that is the sum of w wires now and of v inputs, w - 1, and v - 1 for the way back.
SmallNetwork search_small_networks(const BitMatrix& parities, const Task& task, int least,
                                   int most);

}  // namespace zelt::braidwerk::internal
