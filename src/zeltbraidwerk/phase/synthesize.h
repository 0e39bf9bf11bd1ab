#pragma once

#include <string>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/boolean_matrix.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/phase/phase_polynomial.h"
#include "zeltbraidwerk/search/synthesis_options.h"

namespace synthesis {

/// Outputs are in place, anywhere, or left open: then the linear map that the CNOTs compute is not
/// undone.
struct PhaseOptions : SynthesisOptions {};

/// A circuit of synthesize_phase.
struct PhaseResult : SynthesisResult {
  std::vector<structures::Gate> gates;  ///< "CNOT", and one "PH" per term
  std::vector<int> terms;               ///< of each gate: its term, in key order; -1 for a CNOT
  /// With outputs left open: row r marks the inputs whose XOR stands on wire r at the end. Else
  /// empty.
  BoolMatrix linear_map;
};

/// The methods, without a device or on one; "auto" is the first.
ZELTBRAIDWERK_EXPORT std::vector<std::string> phase_methods(bool on_device = false);

/// A circuit of CNOT and PH gates for the diagonal operator of a phase polynomial. The number of
/// qubits is the length of the keys.
///
/// "gray" is GraySynth, "greedy" takes one of the lightest parities after the other, "search" grows
/// circuits in ever wider beams and shortens the best one, for as long as it may go on; "auto"
/// takes the best of all. What gray and greedy leave is undone by a search of its own, which takes
/// a quarter of a budget.
///
/// Throws std::invalid_argument for keys of unequal length, for the zero parity, which is a global
/// phase, and for options that do not fit; UnfinishedError when no run came to its end.
///
/// Memory: a table of 41 MB for the process, built in a second or two when it is first used.
ZELTBRAIDWERK_EXPORT PhaseResult synthesize_phase(const PhasePolynomial& polynomial,
                                                  const PhaseOptions& options = {});

}  // namespace synthesis
