#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// A gate that commutes with what makes the edges of a graph and makes one more, or takes it away;
/// or a CNOT, by which the edges of `to` gain those of `from`, as row and as column.
struct GraphMove {
  bool is_edge;
  int to;
  int from;
};

/// A graph on its way to none, for clear_by_blocks.
struct GraphInWork {
  std::function<BitMatrix()> edges;
  std::function<void(const GraphMove&)> play;
};

/// Takes away the edges between two random halves of the wires, then those between two halves of
/// each half, and so on down to parts of up to `largest` wires, by few layers of gates for single
/// edges and of CNOTs within the halves (see BlockReduction), by beams. Returns the parts; nothing
/// when the meter ended before.
std::optional<std::vector<std::vector<int>>> clear_by_blocks(int wires, int largest,
                                                             const GraphInWork& graph, Rng& rng,
                                                             Meter& meter);

}  // namespace zelt::braidwerk::internal
