#pragma once

#include <Eigen/Core>
#include <Eigen/Geometry>
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "zeltbraidwerk/foundations/gate.h"

/// \file
/// Gates on the two places of a window, as numbers.
///
/// Place 0 is the first factor of a Kronecker product: the state |q0 q1> has index 2 q0 + q1. A
/// product of matrices acts from right to left, a list of gates from front to back.

namespace zelt::braidwerk::internal {

/// A one-qubit operator up to its phase: the quaternion w + x i + y j + z k stands for
/// w - i (x X + y Y + z Z), so that products are products, and q and -q are the same operator.
using Quaternion = Eigen::Quaterniond;

enum class PlaceKind : std::uint8_t { x, y, z, h, s, s_dagger, rx, ry, rz, cnot, cz };

struct PlaceGate {
  PlaceKind kind = PlaceKind::x;
  std::uint8_t place = 0;  ///< of a CNOT: its control; of a CZ: either
  double angle = 0;        ///< of rx, ry and rz, in radians

  bool two_wire() const { return kind >= PlaceKind::cnot; }
  /// Whether it turns by no multiple of a quarter turn, to 1e-9.
  bool is_rotation() const;
};

/// Two-wire gates, rotations that are no Clifford gates, and all one-wire gates.
struct GateCounts {
  int two_wire = 0;
  int rotations = 0;
  int one_wire = 0;

  void add(const PlaceGate& gate);
  bool operator==(const GateCounts&) const = default;
  /// Fewer two-wire gates; or as many, no more rotations and no more one-wire gates, but not the
  /// same.
  bool better_than(const GateCounts& other) const;
};

GateCounts counts_of(const std::vector<PlaceGate>& gates);

/// The operator of a one-wire gate up to its phase.
Quaternion quaternion_of(const PlaceGate& gate);

/// About axis 0, 1 or 2 (X, Y, Z): exp(-i angle P / 2).
Quaternion rotation_about(int axis, double angle);

/// The 2x2 matrix that a quaternion stands for, of determinant 1.
Eigen::Matrix2cd matrix_of(const Quaternion& turn);

/// Multiplies a 4x4 or 8x8 matrix from the left by a gate. strides[p] is the bit of a row's number
/// that tells the state of place p.
template <typename Matrix>
void apply(const PlaceGate& gate, const std::array<int, 2>& strides, Matrix& m);

/// The 4x4 matrix of a list of gates in time order, phases included: "S" is "RZ" by pi/2, the
/// others are as usual.
Eigen::Matrix4cd matrix_of(const std::vector<PlaceGate>& gates);

/// The gate with its first wire at place 0 and its second, of a two-wire gate, at place 1; "PH" is
/// read as "RZ", and "I" as a rotation by 0. Nothing for other names, for symbolic angles and for
/// angles that are not finite.
std::optional<PlaceGate> place_gate(const structures::Gate& gate);

/// Which of X, Y and Z (bits 0, 1, 2) the gate commutes with where they act on a place of its own.
unsigned commuting_axes(const PlaceGate& gate, int place);

/// The gate on wires `first` (place 0) and `second`.
structures::Gate named_gate(const PlaceGate& gate, int first, int second);

}  // namespace zelt::braidwerk::internal
