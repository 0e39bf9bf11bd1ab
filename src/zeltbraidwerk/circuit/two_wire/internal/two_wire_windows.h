#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "zeltbraidwerk/foundations/gate.h"

namespace zelt::braidwerk::internal {

struct WindowOptions {
  /// Refuses what has more rotations (that are no Clifford gates) than the gates it replaces.
  bool keep_rotations = false;
};

/// What was done to the circuit, one thing after the other. Gates have numbers: the given ones from
/// 0 on, then the new ones as they come up in the log.
struct WindowStep {
  enum class Kind {
    /// `before` stands together: on each of its wires no other gate is between its gates. `after`
    /// takes its place, with the next free numbers.
    replace,
    /// The last of `before` comes to stand right after the two others, which are the last gates of
    /// a block on its first and on its second wire. It commutes with each gate that it passes: on
    /// the
    /// wire that they share both act by the same Pauli operator.
    move,
  };
  Kind kind = Kind::replace;
  std::array<int, 3> wires{-1, -1, -1};  ///< -1 after the last one
  std::vector<std::size_t> before;       ///< in an order of time
  std::vector<structures::Gate> after;   ///< in time order
  double phase = 0;  ///< exp(i phase) times the operator of `after` is that of `before`
};

struct WindowResult {
  std::vector<structures::Gate> circuit;
  std::vector<WindowStep> log;
  double phase = 0;  ///< exp(i phase) times the operator of `circuit` is that of the given one
};

/// Shortens a circuit by two-qubit operators: gates that follow each other on one pair of wires, as
/// many as there are, are replaced by a circuit of the fewest CNOTs for their operator, and gates
/// that follow each other on one wire by at most three. What is replaced has fewer two-wire gates
/// afterwards; or as many of them, no more rotations and no more one-wire gates, and fewer of
/// either. A block that comes to no two-wire gate dissolves, so that the gates around it meet; and
/// a two-wire gate may pass others to an earlier block where it commutes with them by their names
/// alone, as a CNOT does with gates that are diagonal on its control.
///
/// CNOT, CZ, CSIGN, H, S, D-S, X, Y, Z, I, and RX, RY, RZ, PH with a number are worked on; all
/// others keep their places and part what is before them on their wires from what is after. A
/// second call changes nothing. A pass takes linear time, and few are needed.
WindowResult two_wire_windows(const std::vector<structures::Gate>& circuit,
                              const WindowOptions& options);

}  // namespace zelt::braidwerk::internal
