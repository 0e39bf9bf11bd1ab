#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/pauli/pauli_table.h"

/// \file
/// The way from a table to the packed frame and back, and the two moves of the public functions on
/// the frame.

namespace zelt::braidwerk::internal {

inline PauliFrame pack_table(const PauliTable& table) {
  return PauliFrame::pack(table, table.empty() ? 0 : static_cast<int>(table[0].size()));
}

/// Writes the letters back; the angles of the rows that have become negative flip.
inline void unpack_table(const PauliFrame& frame, PauliTable& table,
                         std::vector<structures::Parameter>& params) {
  frame.unpack_into(table);
  for (int r = 0; r < frame.rows(); ++r) {
    structures::Parameter& param = params[static_cast<std::size_t>(r)];
    if (frame.is_negative(r)) param = param.flip_sign();
  }
}

inline void bring_to_z(PauliFrame& frame, int qubit, int code,
                       std::vector<structures::Gate>& circuit) {
  if (code == 1) {
    frame.h(qubit);
    circuit.push_back(structures::Gate::H(qubit));
  } else if (code == 2) {
    frame.rx_plus(qubit);
    circuit.push_back(structures::Gate::RXP(qubit));
  }
}

inline void apply_cnot(PauliFrame& frame, int control, int target,
                       std::vector<structures::Gate>& circuit) {
  frame.cnot(control, target);
  circuit.push_back(structures::Gate::CNOT(control, target));
}

}  // namespace zelt::braidwerk::internal
