#pragma once

#include <vector>

#include "zeltbraidwerk/clifford/search/internal/graph_blocks.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A stabilizer state as a graph state up to gates on single qubits: a generator for each qubit, of
/// one label on it and another label on each of its neighbours.
struct GraphForm {
  BitMatrix edges;         ///< symmetric, and none on the diagonal
  std::vector<int> own;    ///< by qubit: its label in its own generator
  std::vector<int> other;  ///< the one in those of its neighbours

  explicit GraphForm(const PauliFrame& stabilisers);

  /// Changes edges, and returns the gate of the state that does; labels turn by it.
  Gate play(const GraphMove& move);
};

/// Gates that take away all that entangles parts of up to `largest` qubits, drawn at random; fewer
/// when the meter ends.
std::vector<Gate> split_into_parts(const PauliFrame& stabilisers, int largest, Rng& rng,
                                   Meter& meter);

}  // namespace zelt::braidwerk::internal
