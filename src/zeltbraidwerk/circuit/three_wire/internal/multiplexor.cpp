#include "zeltbraidwerk/circuit/three_wire/internal/multiplexor.h"

#include <Eigen/Eigenvalues>
#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>

namespace zelt::braidwerk::internal {

namespace {

using Eigen::Matrix4cd;
using Eigen::Vector4d;
using structures::Gate;
constexpr double pi = std::numbers::pi;
constexpr double zero_angle = 1e-12;

/// By which angle the rotation turns about Z, about Z Z on wires 0 and 2, on 0 and 1, and about Z
/// on all: the Walsh transform of the angles by state.
Vector4d angles_by_parity(const Vector4d& by_state) {
  Eigen::Matrix4d walsh;
  walsh << 1, 1, 1, 1,  //
      1, -1, 1, -1,     //
      1, 1, -1, -1,     //
      1, -1, -1, 1;
  return walsh * by_state / 4;
}

bool turns(double angle) {
  return std::abs(std::remainder(angle, 2 * pi)) > zero_angle;
}

/// CNOTs and then rotations.
int size_of(const Vector4d& by_state) {
  const Vector4d by_parity = angles_by_parity(by_state);
  const int pairs = (turns(by_parity[1]) ? 1 : 0) + (turns(by_parity[2]) ? 1 : 0);
  const bool triple = turns(by_parity[3]);
  const int cnots = triple || pairs == 2 ? 4 : 2 * pairs;
  return 8 * cnots + pairs + (triple ? 1 : 0) + (turns(by_parity[0]) ? 1 : 0);
}

using Order = std::array<Eigen::Index, 4>;

/// The order of the angles, and full turns added to them, for the smallest rotation.
Order best_order(Vector4d& angles) {
  Order order{0, 1, 2, 3};
  Order best = order;
  Vector4d best_angles = angles;
  int least = size_of(angles);
  do {
    for (unsigned turned = 0; turned < 8; ++turned) {
      Vector4d tried;
      for (Eigen::Index k = 0; k < 4; ++k) {
        tried[k] =
            angles[order[static_cast<std::size_t>(k)]] + ((turned >> k) % 2 == 1 ? 2 * pi : 0);
      }
      const int size = size_of(tried);
      if (size >= least) continue;
      least = size;
      best = order;
      best_angles = tried;
    }
  } while (std::ranges::next_permutation(order).found);
  angles = best_angles;
  return best;
}

}  // namespace

Demultiplexed demultiplexed(const Matrix4cd& zero, const Matrix4cd& one) {
  // zero one^-1 = left diag(e^(-i angles)) left^-1. The Schur form of a normal matrix is diagonal,
  // and its vectors are orthonormal for equal eigenvalues as well.
  const Eigen::ComplexSchur<Matrix4cd> schur(zero * one.adjoint());
  Demultiplexed form;
  for (Eigen::Index k = 0; k < 4; ++k) {
    form.angles[k] = -std::arg(schur.matrixT()(k, k));
    if (form.angles[k] < zero_angle - pi) form.angles[k] += 2 * pi;
  }
  const Order order = best_order(form.angles);
  for (Eigen::Index k = 0; k < 4; ++k) {
    form.left.col(k) = schur.matrixU().col(order[static_cast<std::size_t>(k)]);
  }
  form.right = form.left.adjoint() * one;
  for (Eigen::Index k = 0; k < 4; ++k) {
    form.right.row(k) *= std::polar(1.0, -form.angles[k] / 2);
  }
  return form;
}

MultiplexedRotation multiplexed_rotation(const Vector4d& angles) {
  const Vector4d by_parity = angles_by_parity(angles);
  MultiplexedRotation rotation;
  const auto rz = [&](Eigen::Index parity) {
    if (turns(by_parity[parity])) {
      const double angle = std::remainder(by_parity[parity], 4 * pi);
      rotation.gates.emplace_back("RZ", std::vector<int>{0},
                                  std::vector{structures::Parameter(angle)}, true);
    }
  };
  const auto cnot = [&](int control) {
    rotation.gates.push_back(Gate::CNOT(control, 0));
    rotation.last_control = control;
  };
  const bool on_1 = turns(by_parity[2]) || turns(by_parity[3]);
  const bool on_2 = turns(by_parity[1]) || turns(by_parity[3]);
  rz(0);
  if (on_2) cnot(2);
  if (on_2) rz(1);
  if (on_1) cnot(1);
  if (on_1 && on_2) {
    rz(3);
    cnot(2);
  }
  if (on_1) rz(2);
  if (on_1) cnot(1);
  if (on_2 && !on_1) cnot(2);
  return rotation;
}

}  // namespace zelt::braidwerk::internal
