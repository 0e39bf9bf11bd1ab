#pragma once

#include <string>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/operator_tableau.h"
#include "zeltbraidwerk/search/synthesis_options.h"

namespace synthesis {

/// Options of synthesize_clifford: those of all families.
struct CliffordOptions : SynthesisOptions {};

/// Gates are "CNOT", "H", "S", "RX" by pi/2, "X", "Y" and "Z".
struct CliffordResult : SynthesisResult {
  std::vector<structures::Gate> gates;  ///< in time order
};

/// The methods, without a device or on one; "auto" is the first.
ZELTBRAIDWERK_EXPORT std::vector<std::string> clifford_methods(bool on_device = false);

/// A circuit that acts on every Pauli operator as the tableau does, signs included: the operator up
/// to a global phase. Outputs are in place or anywhere. No circuit has fewer CNOTs on up to four
/// qubits without a device, and on five where these are what is to become few, with a step or more.
/// On six `least_count` rises with the steps, from some 450,000 on, and meets the count of sparse
/// operators, or with outputs anywhere of nearly all, at once, and of most others in some seconds.
///
/// "elimination" is a plain greedy one, in a moment; "search" is the search engine; "auto" takes
/// the better. That the tableau is one of a Clifford operator is not checked: the circuit of
/// another one acts otherwise. Throws std::invalid_argument for options that do not fit,
/// and TooLargeError for more than 16,384 qubits; so does synthesize_state.
///
/// Memory: tables of 51 MB, built in a second or two, once per machine where files can be kept. On
/// six qubits one of 23 MB more, built in four seconds after some 450,000 steps, or with a budget
/// of 9 s; and 60 MB for a long search.
ZELTBRAIDWERK_EXPORT CliffordResult synthesize_clifford(const structures::OperatorTableau& tableau,
                                                        const CliffordOptions& options = {});

/// Options of synthesize_state: those of all families.
struct StateOptions : SynthesisOptions {};

/// A circuit of synthesize_state.
struct StateResult : SynthesisResult {
  std::vector<structures::Gate> gates;  ///< as of CliffordResult
};

/// The methods, without a device or on one; "auto" is the first.
ZELTBRAIDWERK_EXPORT std::vector<std::string> state_methods(bool on_device = false);

/// A circuit that turns all qubits, being 0, into a stabilizer state, up to a global phase. It
/// takes about a quarter of the gates of an operator. Outputs are in place; on a device in place or
/// anywhere: then qubit q of the state is on vertex permutation[q] of the device.
///
/// The state is the one that the operator makes of zeros; or that of stabilisers, one string of
/// codes per qubit (0 = I, 1 = X, 2 = Y, 3 = Z), with `minus[k]` for the sign of string k. Throws
/// std::invalid_argument for strings that are no stabilisers of one state, and for options that do
/// not fit.
/// @{
ZELTBRAIDWERK_EXPORT StateResult synthesize_state(const structures::OperatorTableau& tableau,
                                                  const StateOptions& options = {});
ZELTBRAIDWERK_EXPORT StateResult
synthesize_state(const std::vector<std::vector<unsigned char>>& stabilisers,
                 const std::vector<bool>& minus, const StateOptions& options = {});
/// @}

}  // namespace synthesis
