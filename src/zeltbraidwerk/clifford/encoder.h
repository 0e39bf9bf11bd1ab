#pragma once

#include <string>
#include <vector>

#include "zeltbraidwerk/clifford/synthesize.h"
#include "zeltbraidwerk/export.h"

namespace synthesis {

/// The methods are those of states; there are no devices.
struct EncoderOptions : SynthesisOptions {};

/// A circuit that encodes into a code, and where its logical qubits come in.
struct EncoderResult : SynthesisResult {
  std::vector<structures::Gate> gates;  ///< as of CliffordResult
  std::vector<int> logical_wires;       ///< logical qubit i comes in on wire logical_wires[i]
};

/// @{
/// A circuit that encodes k logical qubits into a stabilizer code on n qubits, up to a global
/// phase. Logical qubit i comes in on wire logical_wires[i], and 0 on the other n - k wires; what
/// comes out has the stabilisers, each with its sign, every qubit of the code in its place.
///
/// The code is given by n - k independent stabilisers that commute, as strings of codes (0 = I,
/// 1 = X, 2 = Y, 3 = Z), with `minus[r]` for the sign of string r. `logicals` are the logical
/// operators that X on the k logical qubits, then Z, are to become, up to products with
/// stabilisers. Without them any logical operators will do, and the circuit is shorter. A code
/// without logical qubits is a state: the circuit is the one of synthesize_state.
///
/// Which generators of the stabilisers the zeros become, which representatives of the logical
/// operators, and what the circuit does to other inputs is left to the search. It takes the
/// stabilisers apart as those of a state and walks on windows of up to four wires; where logical
/// operators of several qubits are wanted, it also searches whole Clifford operators that have
/// them.
///
/// The methods are those of states. There are no devices. Throws std::invalid_argument for strings
/// that are no stabilisers or logical operators of one code, and for options that do not fit, and
/// TooLargeError for more than 16,384 qubits. A step costs what one of synthesize_state does.
///
/// The plain elimination of a code: D. Gottesman, "Stabilizer codes and quantum error correction"
/// (1997), section 4.2.
ZELTBRAIDWERK_EXPORT EncoderResult
synthesize_encoder(const std::vector<std::vector<unsigned char>>& stabilisers,
                   const std::vector<bool>& minus, const EncoderOptions& options = {});
ZELTBRAIDWERK_EXPORT EncoderResult synthesize_encoder(
    const std::vector<std::vector<unsigned char>>& stabilisers, const std::vector<bool>& minus,
    const std::vector<std::vector<unsigned char>>& logicals,
    const std::vector<bool>& logicals_minus, const EncoderOptions& options = {});
/// @}

}  // namespace synthesis
