#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

struct DeviceEliminationOptions {
  int width = 1;      ///< of the beam
  int vertices = 64;  ///< that may go next, see LeavingWires
  /// Of these and the lines of each that may be cleared first, so many are looked at further, those
  /// of the fewest gates.
  int clearings = 256;
  int finishers = 1;  ///< circuits wanted
};

/// The largest device for which the search below is meant; beyond it there is no result.
inline constexpr int most_eliminated_wires = 256;

/// CNOT circuits of an invertible matrix on the edges of a connected graph by a beam search: level
/// by level one vertex that does not cut the rest in two is cleared, its column and its row along
/// Steiner trees, and leaves. Before a line is cleared, lines of wires beside its own are added to
/// it where that makes it lighter (LightLine). Rows and columns are added to each other alike, on
/// the matrix as on its inverse: the circuit grows from both ends. A state is as good as its gates
/// are few and the rows and columns left are light and close together.
///
/// The shortest first; none when the effort was spent before.
std::vector<GateList> eliminate_on_device(const BitMatrix& m, const BitGraph& graph,
                                          const DeviceEliminationOptions& options, Rng& rng,
                                          Meter& meter);

}  // namespace zelt::braidwerk::internal
