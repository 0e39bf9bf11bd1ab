#pragma once

#include "zeltbraidwerk/pauli/search/internal/network_search.h"

namespace zelt::braidwerk::internal {

/// Whether no qubit has two different letters, so that gates on single qubits make all rows
/// parities.
bool is_locally_diagonal(const PauliFrame& frame);

/// The circuit of such rotations that the search for parity networks finds. At least one greedy
/// run.
NetworkResult search_diagonal_network(const Rotations& rotations, const NetworkOptions& options,
                                      const Effort& effort);

}  // namespace zelt::braidwerk::internal
