#pragma once

#include <optional>
#include <string>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/operator_tableau.h"
#include "zeltbraidwerk/pauli/pauli_table.h"
#include "zeltbraidwerk/search/synthesis_options.h"

namespace synthesis {

/// Outputs are in place, anywhere (without a device), or left open: then the Clifford gates after
/// the rotations are not undone.
struct PauliOptions : SynthesisOptions {
  /// Only rotations that commute change places, so that the product stays the same. Else all may,
  /// as in a Trotter step.
  bool in_order = true;
  /// The Clifford operator that is to follow the rotations, in the place of none. Outputs are not
  /// left open then.
  std::optional<structures::OperatorTableau> tail;
};

/// A circuit of synthesize_pauli.
struct PauliResult : SynthesisResult {
  std::vector<structures::Gate> gates;  ///< CNOTs, Clifford gates, and one rotation per row
  std::vector<int> rows;  ///< of each gate: the row that it is the rotation of; else -1
  bool in_order = true;   ///< whether the circuit is the product in the order of the rows
};

/// The methods, without a device or on one; "auto" is the first.
ZELTBRAIDWERK_EXPORT std::vector<std::string> pauli_methods(bool on_device = false);

/// A circuit for the product of the Pauli rotations of a table on n qubits, of which the first acts
/// first: row r turns by params[r]. Rows of I alone get no gate.
///
/// "ladder" takes each rotation alone; "recursive", "greedy" and "greedy_depth" group them; the
/// methods "sets..." diagonalise sets that commute; "search" runs greedily, then by wider and wider
/// beams; "auto" takes the best of them, and for count never more CNOTs than "ladder". In order,
/// all but the search cut the rotations into layers that commute, and take layer by layer.
///
/// A circuit to start from holds the same rotations: each row once, with its angle modulo 2 pi, in
/// order unless any order will do, and after them what the options ask for. "search" goes on from
/// it.
///
/// Throws std::invalid_argument for a row that has not n letters, another number of angles, and
/// options that do not fit, and TooLargeError for more than 16,384 qubits.
ZELTBRAIDWERK_EXPORT PauliResult synthesize_pauli(int n, const PauliTable& table,
                                                  const std::vector<structures::Parameter>& params,
                                                  const PauliOptions& options = {});

}  // namespace synthesis
