#pragma once

#include <cstdint>
#include <limits>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

inline constexpr int any_reach = std::numeric_limits<int>::max();

struct DeviceSearchOptions {
  /// Edges that an output may be away from its place: 0 for outputs in their places.
  int reach = 0;
  bool by_depth = false;  ///< fewest layers first, then gates; else the other way round
  std::uint64_t seed = 0;
  std::uint64_t stream = 0;
};

/// A short CNOT circuit of an invertible matrix on the edges of a connected graph: what
/// eliminations by rows and columns find, then beams of them, ever wider, and walks from the best,
/// ever longer. Wire w of the result has output wire_of(origin[4 w]).
///
/// There is always a circuit, whatever the effort: one elimination without a search.
GateList search_cnot_on_device(const BitMatrix& m,
                                                           const BitGraph& graph,
                                                           const DeviceSearchOptions& options,
                                                           const Effort& effort);

}  // namespace zelt::braidwerk::internal
