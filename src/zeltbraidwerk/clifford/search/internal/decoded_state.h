#pragma once

#include <cstdint>

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A circuit of a state on many qubits whose stabilisers have many letters, by elimination of one
/// block of qubits after the other.
///
/// The state is brought to the form of a graph. A circuit that takes apart the graph of the block
/// is searched. Each other qubit controls a product of Z on the block. On the way the circuit
/// passes many strings, which matter up to stabilisers of the block alone: the fewest that multiply
/// to what a qubit controls are found by decoding (decoded_receiving.h). What gates between qubits
/// outside of the block do to their graph is made up for when their block comes.
///
/// The circuit is made in about `steps` steps; it has no wires where the effort ends before.
GateList state_by_decoding(const PauliFrame& stabilisers, std::uint64_t steps, Rng& rng,
                           Meter& meter);

}  // namespace zelt::braidwerk::internal
