#pragma once

#include <cstdint>
#include <vector>

#include "zeltbraidwerk/foundations/gate.h"

namespace zelt::braidwerk::internal {

/// A Clifford gate in 12 bytes. Circuits of millions of gates are made of these: a structures::Gate
/// takes 88 bytes and an allocation or two.
struct CliffordGate {
  /// Rotations are by plus and minus pi/2, s is the one about Z.
  enum class Kind : std::uint8_t { cnot, cz, h, s, s_dagger, rx_plus, rx_minus, x, y, z };

  Kind kind;
  int a;       ///< the control of a CNOT
  int b = -1;  ///< the second qubit of a pair

  static CliffordGate cnot(int control, int target) { return {Kind::cnot, control, target}; }

  bool is_pair() const { return b >= 0; }
  CliffordGate inverse() const;

  bool operator==(const CliffordGate&) const = default;
};

/// The inverse of a circuit.
std::vector<CliffordGate> inverted(std::vector<CliffordGate> gates);

/// "CNOT", "CSIGN", "H", "RZ" and "RX" by plus or minus pi/2, "X", "Y", "Z".
structures::Gate to_gate(const CliffordGate& gate);
std::vector<structures::Gate> to_gates(const std::vector<CliffordGate>& gates);

}  // namespace zelt::braidwerk::internal
