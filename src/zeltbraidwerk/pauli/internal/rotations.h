#pragma once

#include <stdexcept>
#include <vector>

#include "zeltbraidwerk/pauli/internal/table_frame.h"

/// \file
/// What the syntheses share: rotations on their way in, and as gates on their way out.

namespace zelt::braidwerk::internal {

/// Row r of the frame turns by params[r]; a row that has become negative turns backward.
struct Rotations {
  PauliFrame frame;
  std::vector<structures::Parameter> params;
};

/// In key order. Throws std::invalid_argument for a string of another length.
inline Rotations pack_rotations(const PauliRotationMap& rotations, int qubits) {
  PauliTable table;
  Rotations packed;
  for (const auto& [letters, angle] : rotations) {
    if (static_cast<int>(letters.size()) != qubits) {
      throw std::invalid_argument("A Pauli string does not have a letter for each qubit");
    }
    table.push_back(letters);
    packed.params.push_back(angle);
  }
  packed.frame = PauliFrame::pack(table, qubits);
  return packed;
}

/// The qubit of a row's only letter; -1 when it has none or more.
inline int lone_qubit(const PauliFrame& frame, int row) {
  int lone = -1;
  for (int q = 0; q < frame.qubits(); ++q) {
    if (frame.letter(row, q) == 0) continue;
    if (lone >= 0) return -1;
    lone = q;
  }
  return lone;
}

/// The rotation about one letter other than I; `z_name` is the name of the one about Z.
inline structures::Gate rotation_gate(unsigned char letter, int q,
                                      const structures::Parameter& angle, const char* z_name) {
  if (letter > 3) throw std::out_of_range("map::at:  key not found");
  return {letter == 1 ? "RX" : letter == 2 ? "RY" : z_name, {q}, {angle}, letter == 3};
}

/// Of a row whose only letter is on q.
inline structures::Gate rotation_gate(const PauliFrame& frame, int row, int q,
                                      const structures::Parameter& angle, const char* z_name) {
  return rotation_gate(frame.letter(row, q), q, frame.is_negative(row) ? angle.flip_sign() : angle,
                       z_name);
}

}  // namespace zelt::braidwerk::internal
