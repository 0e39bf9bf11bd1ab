#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/window.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {

/// A stabilizer code, the goal of a search for an encoder. A state is a code without logical
/// qubits.
struct Code {
  PauliFrame stabilisers;  ///< n - k independent strings that commute
  /// Images of X, then of Z, on the k logical qubits, up to products with stabilisers. No rows: any
  /// logical operators will do.
  PauliFrame logicals;

  int qubits() const { return stabilisers.qubits(); }
  int logical_qubits() const { return qubits() - stabilisers.rows(); }
  bool any_logicals() const { return logicals.rows() == 0; }
};

/// One row per string: its X bits, then its Z bits.
BitMatrix bits_of(const PauliFrame& strings);

/// Multiplies every string by the gate's that anticommutes with one end of it alone; signs are left
/// as they are.
void apply_unsigned(PauliFrame& strings, const Gate& gate);

/// Multiplies row `to` by row `from`, signs left out.
void multiply(PauliFrame& strings, int from, int to);

/// The strings with the letters of qubit q on wire wires[q].
PauliFrame on_wires(const PauliFrame& strings, const std::vector<int>& wires);

/// Whether strings commute and none is a product of others.
bool are_independent_stabilisers(const PauliFrame& strings);

/// Whether a quarter of the strings or more have few letters, at most 12: those of a sparse code,
/// or of a state of one.
bool are_light(const PauliFrame& strings);

/// Whether strings commute with all stabilisers, and with each other as X, then Z, on as many
/// qubits as the code has logical ones.
bool are_logicals_of(const PauliFrame& strings, const PauliFrame& stabilisers);

/// The qubits in groups: the finest ones such that the stabilisers are those of each group,
/// multiplied.
WireGroups entangled_groups(const PauliFrame& stabilisers);

/// The images of X, then of Z, on all qubits under an operator that has the generators and logical
/// operators of the code as they are given. `images` are those of one that encodes into it, logical
/// qubits first.
PauliFrame images_as_given(const Code& code, const PauliFrame& images);

/// The images under another operator that encodes alike, with lighter rows: Z on a wire of zero
/// controls X or Z on another one, before the operator, as long as that takes letters off.
PauliFrame with_light_gauge(const PauliFrame& images, int logical_qubits);

}  // namespace zelt::braidwerk::internal
