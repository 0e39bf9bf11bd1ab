#pragma once

#include <optional>
#include <string>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/boolean_matrix.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/search/synthesis_options.h"

namespace synthesis {

/// Options of synthesize_graph_state.
struct GraphStateOptions : SynthesisOptions {
  std::optional<int> tries;  ///< random restarts of each step of "decoding"; 100 where not given
};

/// A circuit of synthesize_graph_state.
struct GraphStateResult : SynthesisResult {
  std::vector<structures::Gate> gates;  ///< in time order
};

/// The methods, without a device or on one; "auto" is the first.
ZELTBRAIDWERK_EXPORT std::vector<std::string> graph_state_methods(bool on_device = false);

/// A circuit of "CNOT", "CSIGN" and gates on one qubit that prepares a graph state from all qubits
/// 0: every qubit in the state plus, then a CZ on every edge. A one on the diagonal of the
/// symmetric matrix is an S on that qubit. Outputs are in place, on a device in place or anywhere.
///
/// "naive" takes one CZ per edge; "decoding" attaches vertex after vertex by few gates, found by
/// syndrome decoding; "search" begins with one gate per edge and gets better for as long as it may
/// go on; "auto" takes the better of "naive" and "search". On a device there is "search" alone.
/// Throws std::invalid_argument for a matrix that is not symmetric, and for options that do not
/// fit, and TooLargeError for "search" on more than 16,384 qubits, where "auto" goes without it.
ZELTBRAIDWERK_EXPORT GraphStateResult synthesize_graph_state(const BoolMatrix& graph,
                                                             const GraphStateOptions& options = {});

}  // namespace synthesis
