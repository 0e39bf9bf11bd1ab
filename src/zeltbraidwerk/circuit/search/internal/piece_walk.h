#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/pauli/search/internal/network.h"

namespace zelt::braidwerk::internal {

/// How a circuit is walked in pieces.
struct PieceWalkOptions {
  int qubits = 0;
  const BitGraph* device = nullptr;
  /// Of all pieces together; each gets its share. The odds to go uphill fall over as many.
  std::uint64_t steps = 0;
  std::uint64_t most_steps = 0;  ///< those that are made, where the effort ends before
  /// Never to more layers; a piece of several never to more than it began with.
  int most_layers = std::numeric_limits<int>::max();
  bool exchanges = false;  ///< of wires, as NetworkWalk makes them; not on a device
  bool by_layers = false;  ///< not to more layers than the least so far; for one piece
  std::uint64_t seed = 0;  ///< of the draws, those of a piece by its number
  int piece = 0;           ///< events, about; 0: all in one
  int jobs = 1;            ///< threads
};

struct PieceWalkResult {
  std::vector<NetworkEvent> events;
  std::uint64_t steps = 0;  ///< that were made
};

/// Cuts a circuit by time into pieces, at places that are drawn, and walks from each by itself, as
/// NetworkWalk does: an equal circuit but for gates on single wires. A piece ends as the latest of
/// its shortest forms where it makes all steps, and else as the first of them, so that more steps
/// are never worse. The result does not depend on `jobs`.
PieceWalkResult walk_in_pieces(const std::vector<NetworkEvent>& events,
                               const PieceWalkOptions& options, const Control& control);

}  // namespace zelt::braidwerk::internal
