#pragma once

#include "zeltbraidwerk/clifford/search/internal/code.h"
#include "zeltbraidwerk/clifford/search/internal/encoder_list.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/placed_circuit.h"
#include "zeltbraidwerk/search/internal/task.h"

namespace zelt::braidwerk::internal {

/// Independent strings that commute, one per qubit: the stabilisers of one state.
bool stabilise_a_state(const PauliFrame& strings);

/// A circuit of few CNOTs, and H, S, RX by pi/2, X, that turns zeros into the state with these
/// stabilisers, signs included, outputs in place.
/// One greedy run whatever the effort; then wider beams, a walk, and new beginnings of the circuit
/// in turns until it ends. Strings that stabilise no state give a circuit of another one.
///
/// A state of a beam takes n^2 bytes, up to 64 qubits some kilobytes more; the table of windows
/// 32 MB, once; decoding, for dense states on 150 qubits and more, up to 14 MB; beams with all
/// words of a small code in view, up to 40 MB.
CliffordCircuit search_state(const PauliFrame& stabilisers, const Task& task, const Effort& effort);

/// The same up to signs, as a list of gates. Sets the steps of the effort to those that it took.
GateList state_list(const PauliFrame& stabilisers, const Task& task, Effort& effort);

/// The same for a code: the circuit takes logical qubits and zeros to the code, signs included. The
/// stabilisers must be independent and commute, and the logical operators fit them.
EncoderCircuit search_encoder(const Code& code, const Task& task, const Effort& effort);

}  // namespace zelt::braidwerk::internal
