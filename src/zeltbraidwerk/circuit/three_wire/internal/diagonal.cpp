#include "zeltbraidwerk/circuit/three_wire/internal/diagonal.h"

#include <Eigen/LU>
#include <array>
#include <cmath>
#include <complex>
#include <utility>

#include "zeltbraidwerk/circuit/two_wire/internal/two_wire.h"
#include "zeltbraidwerk/circuit/two_wire/internal/weyl_form.h"

namespace zelt::braidwerk::internal {

namespace {

using Complex = std::complex<double>;
using Eigen::Matrix4cd;
using Eigen::Vector4cd;

/// exp(-i angle Z Z / 2).
Vector4cd interaction(double angle) {
  const Complex even = std::polar(1.0, -angle / 2);
  const Complex odd = std::conj(even);
  return {even, odd, odd, even};
}

Matrix4cd without(double angle, const Matrix4cd& unitary) {
  return interaction(-angle).asDiagonal() * unitary;
}

/// The coefficient that has to be 0 for two CNOTs.
double third_coefficient(double angle, const Matrix4cd& unitary) {
  return weyl_form(without(angle, unitary)).c[2];
}

/// Where tr(m Y m^T Y) is real, m being without the interaction, of determinant 1, and Y the
/// operator Y on both wires.
double angle_by_trace(const Matrix4cd& unitary) {
  Matrix4cd y = Matrix4cd::Zero();
  y(0, 3) = y(3, 0) = -1;
  y(1, 2) = y(2, 1) = 1;
  const Matrix4cd product =
      unitary * y * unitary.transpose() * y / std::sqrt(unitary.determinant());
  const Vector4cd signs(1, -1, -1, 1);
  const Complex plain = product.trace();
  const Complex signed_trace = product.diagonal().cwiseProduct(signs).sum();
  return std::atan2(-plain.imag(), signed_trace.real());
}

/// The trace is off by the product of the other coefficients, which may be small, so the
/// coefficient itself is brought to 0 by the secant method.
double refined(double angle, const Matrix4cd& unitary) {
  constexpr int most_rounds = 8;
  constexpr double enough = 1e-14;
  double other = angle + 1e-7;
  double value = third_coefficient(angle, unitary);
  double value_there = third_coefficient(other, unitary);
  for (int k = 0; k < most_rounds && std::abs(value) > enough; ++k) {
    if (value == value_there) break;
    const double next = angle - value * (angle - other) / (value - value_there);
    const double value_next = third_coefficient(next, unitary);
    if (!(std::abs(value_next) < std::abs(value))) break;
    other = std::exchange(angle, next);
    value_there = std::exchange(value, value_next);
  }
  return angle;
}

}  // namespace

Vector4cd diagonal_split_off(Matrix4cd& unitary) {
  const std::array<double, 3> c = weyl_form(unitary).c;
  double best = 0;
  if (int fewest = cnots_needed(c); fewest == 3) {
    best = refined(angle_by_trace(unitary), unitary);
  } else {
    for (const double angle : {2 * c[0], -2 * c[0]}) {
      const int needed = cnots_needed(without(angle, unitary));
      if (needed >= fewest) continue;
      fewest = needed;
      best = angle;
    }
  }
  unitary = without(best, unitary);
  return interaction(best);
}

}  // namespace zelt::braidwerk::internal
