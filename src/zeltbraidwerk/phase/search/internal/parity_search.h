#pragma once

#include <cstdint>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/phase/internal/phase_circuit.h"
#include "zeltbraidwerk/search/internal/effort.h"

namespace zelt::braidwerk::internal {

/// What becomes of the linear map that the CNOTs leave behind.
enum class Leftover {
  returned,       ///< left as it is
  closed_freely,  ///< undone, outputs on other wires
  closed,         ///< undone, outputs in their places
};

struct ParitySearchOptions {
  Leftover leftover = Leftover::closed;
  const BitGraph* graph = nullptr;  ///< CNOTs on its edges alone; connected
  bool by_depth = false;            ///< of the circuits met on the way the one of fewest layers
  std::uint64_t seed = 0;
  std::uint64_t stream = 0;  ///< one a run
};

struct ParitySearchResult {
  std::vector<PhaseStep> steps;
  std::vector<int> permutation;  ///< qubit k ends on wire permutation[k]; in place where returned
};

/// A phase circuit of few CNOTs in which every parity, a column each, comes up on some wire. Zero
/// columns are left out.
///
/// One greedy run whatever the effort; then in turns a beam that grows networks, each time a wider
/// one, and a walk over the windows of the best circuit, until the effort ends.
///
/// Memory: 16 bytes for a parity and 32 for a wire, for each state of a beam and word of wires.
ParitySearchResult search_parities(const BitMatrix& parities,
                                                               const ParitySearchOptions& options,
                                                               const Effort& effort);

}  // namespace zelt::braidwerk::internal
