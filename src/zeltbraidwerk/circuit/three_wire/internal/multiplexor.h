#pragma once

#include <Eigen/Core>
#include <array>
#include <vector>

#include "zeltbraidwerk/foundations/gate.h"

/// \file
/// Operators of two qubits that depend on the state of a third one. On wires 0, 1 and 2, wire 0 is
/// the one that selects.

namespace zelt::braidwerk::internal {

/// diag(zero, one) = (I x left) diag(e^(-i angles/2), e^(i angles/2)) (I x right): two operators of
/// wires 1 and 2, and between them a rotation of wire 0 about Z by one angle for each state of
/// these. V. V. Shende, S. S. Bullock, I. L. Markov, IEEE Transactions on Computer-Aided Design 25
/// (2006) 1000.
struct Demultiplexed {
  Eigen::Matrix4cd left;
  Eigen::Vector4d angles;
  Eigen::Matrix4cd right;
};

/// Of unitary matrices. Where the order and the branches of the angles are free, those with the
/// fewest CNOTs are taken.
Demultiplexed demultiplexed(const Eigen::Matrix4cd& zero, const Eigen::Matrix4cd& one);

/// The rotation of wire 0 as gates in time order: "RZ" on wire 0 and CNOTs from wires 1 and 2 to
/// it. All of these commute with what is diagonal on wires 1 and 2.
struct MultiplexedRotation {
  std::vector<structures::Gate> gates;  ///< read backward they have the same operator
  /// The control of the last gate, or -1 where there is no CNOT.
  int last_control = -1;
};
MultiplexedRotation multiplexed_rotation(const Eigen::Vector4d& angles);

}  // namespace zelt::braidwerk::internal
