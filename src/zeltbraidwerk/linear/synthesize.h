#pragma once

#include <optional>
#include <string>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/boolean_matrix.h"
#include "zeltbraidwerk/foundations/cnot_circuit.h"
#include "zeltbraidwerk/search/synthesis_options.h"

namespace synthesis {

/// Options of synthesize_linear.
struct LinearOptions : SynthesisOptions {
  std::optional<int>
      section;  ///< columns that "pmh" clears together, 1 to 30; else the best number
  /// The beam of "syndrome" and of the greedy methods: continuations that are kept of each state,
  /// and steps that are looked ahead, up to 64. 1 where not given.
  /// @{
  std::optional<int> width;
  std::optional<int> lookahead;
  /// @}
  /// With Outputs::within_reach, for "search" on a device: edges that an output may be away from
  /// its place.
  int reach = 0;
  /// A Hamiltonian path of the device for "steiner" or "sorting". Empty: it is searched for, for as
  /// long as the budget or for 5 seconds.
  std::vector<int> path;
};

/// Output r of the matrix is on wire permutation[r].
struct LinearCircuit {
  structures::CnotCircuit circuit;  ///< the CNOTs
  std::vector<int> permutation;     ///< by output: its wire
};

/// A circuit of synthesize_linear.
struct LinearResult : SynthesisResult {
  structures::CnotCircuit circuit;  ///< of the matrix, rows where `permutation` tells
  /// Wires of the largest windows of "search": 4 where the budget is too short for the tables of 5.
  /// 0 for other methods.
  int window = 0;
  /// What "search" found for Objective::depth without a device: circuits from few layers to few
  /// gates, none both as shallow and as short as another.
  std::vector<LinearCircuit> front;
};

/// The methods, without a device or on one; "auto" is the first.
ZELTBRAIDWERK_EXPORT std::vector<std::string> linear_methods(bool on_device = false);

/// A CNOT circuit of an invertible matrix over GF(2), not of its inverse: row r marks the inputs
/// whose XOR stands on output r.
///
/// "auto" runs several methods beside the search and is never worse than "pmh". "search" gets
/// better for as long as it may go on; without steps and budget it makes 12,500 steps per qubit,
/// about 0.1 s for 8 qubits and 1 s for 64, or for depth what takes about a second. On a device,
/// "row_column" takes any connected one, "steiner" and "sorting" one with a Hamiltonian path; the
/// last makes at most 5 n layers. Outputs are in place, anywhere, or within reach.
///
/// Throws std::invalid_argument for a matrix that is not square or not invertible and for options
/// that do not fit, TooLargeError for a beam that does not fit into memory, UnfinishedError when no
/// run came to its end.
ZELTBRAIDWERK_EXPORT LinearResult synthesize_linear(const BoolMatrix& matrix,
                                                    const LinearOptions& options = {});

}  // namespace synthesis
