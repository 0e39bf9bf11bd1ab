#pragma once

#include <functional>
#include <vector>

#include "zeltbraidwerk/circuit/two_wire/internal/two_wire_windows.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"

namespace zelt::braidwerk::internal {

struct ThreeWireOptions {
  /// Refuses what has more rotations (that are no Clifford gates) than the gates it replaces.
  bool keep_rotations = false;
  int least_two_wire = 1;            ///< smaller blocks are left alone
  const BitGraph* device = nullptr;  ///< three wires are joined to each other, or left alone
  std::function<bool()> ended = {};  ///< asked before each block: whether the rest is left alone
};

/// Gathers the gates of a circuit in blocks on up to three wires, and replaces each block by
/// three_wire_circuit() where that has fewer two-wire gates. The log is empty where nothing is
/// replaced; then the circuit is the given one. Gates that two_wire_windows() leaves alone are left
/// alone. Linear time, about a millisecond per block.
WindowResult three_wire_windows(const std::vector<structures::Gate>& circuit,
                                const ThreeWireOptions& options);

}  // namespace zelt::braidwerk::internal
