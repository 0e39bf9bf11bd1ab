#pragma once

#include <vector>

#include "zeltbraidwerk/clifford/search/internal/graph_blocks.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/walk.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {

/// The letter of a frame that a label stands for.
constexpr unsigned char letter_for(int label) {
  return letter_of((label & label_x) != 0, (label & label_z) != 0);
}

/// A stabilizer state as a graph state up to gates on single qubits: a generator for each qubit, of
/// one label on it and another label on each of its neighbours.
struct StateGraph {
  BitMatrix edges;         ///< symmetric, and none on the diagonal
  std::vector<int> own;    ///< by qubit: its label in its own generator
  std::vector<int> other;  ///< the one in those of its neighbours

  explicit StateGraph(const PauliFrame& stabilisers);

  /// Calls f(a, b), a < b.
  template <class F>
  void each_edge(F&& f) const {
    for (int a = 0; a < edges.rows(); ++a) {
      for_each_bit(edges.row(a), edges.stride(), [&](int b) {
        if (a < b) f(a, b);
      });
    }
  }

  /// Qubits that are joined by edges: the finest groups into which the state is a product.
  WireGroups groups() const;

  /// Changes edges, and returns the gate of the state that does; labels turn by it.
  Gate play(const GraphMove& move);
  /// The gate alone: labels turn, and edges stay.
  Gate gate_of(const GraphMove& move);

  /// The state of some qubits, which have no edges to others.
  PauliFrame part(const std::vector<int>& qubits) const;
};

}  // namespace zelt::braidwerk::internal
