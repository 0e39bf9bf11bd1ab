#include "zeltbraidwerk/circuit/two_wire/internal/weyl_form.h"

#include <Eigen/LU>
#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <utility>

namespace zelt::braidwerk::internal {

namespace {

using Complex = std::complex<double>;
constexpr double pi = std::numbers::pi;

/// The magic basis, one state per column: in it one-qubit gates are real, and XX, YY and ZZ
/// diagonal.
const Eigen::Matrix4cd& magic_basis() {
  static const Eigen::Matrix4cd basis = [] {
    const Complex i(0, 1);
    Eigen::Matrix4cd m;
    m << 1, 0, 0, i,  //
        0, i, 1, 0,   //
        0, i, -1, 0,  //
        1, 0, 0, -i;
    return Eigen::Matrix4cd(m * std::sqrt(0.5));
  }();
  return basis;
}

/// The angle of the rotation of axes p and q that makes the entries (p, q) of two symmetric
/// matrices least, or 0 where these are noise: then equal eigenvalues would mix their vectors at
/// random, and cost rotations. J.-F. Cardoso, A. Souloumiac, SIAM Journal on Matrix Analysis 17
/// (1996) 161, for real rotations.
double joint_angle(const Eigen::Matrix4d& a, const Eigen::Matrix4d& b, int p, int q) {
  constexpr double noise = 1e-13;
  const Eigen::Vector2d half_gap(a(p, p) - a(q, q), b(p, p) - b(q, q));
  const Eigen::Vector2d beside(2 * a(p, q), 2 * b(p, q));
  if (beside.squaredNorm() <= noise * noise) return 0;
  const double along = half_gap.squaredNorm() - beside.squaredNorm();
  return std::atan2(2 * half_gap.dot(beside), along) / 4;
}

/// Diagonalises two commuting symmetric matrices at once, by Jacobi's rotations. The result has the
/// common eigenvectors as its columns and determinant 1. Clusters of equal eigenvalues do no harm:
/// no gap is divided by.
Eigen::Matrix4d common_eigenvectors(Eigen::Matrix4d a, Eigen::Matrix4d b) {
  constexpr int most_sweeps = 20;
  Eigen::Matrix4d vectors = Eigen::Matrix4d::Identity();
  bool turned = true;
  for (int sweep = 0; turned && sweep < most_sweeps; ++sweep) {
    turned = false;
    for (int p = 0; p < 4; ++p) {
      for (int q = p + 1; q < 4; ++q) {
        const double angle = joint_angle(a, b, p, q);
        if (angle == 0) continue;
        turned = true;
        const Eigen::JacobiRotation<double> rotation(std::cos(angle), std::sin(angle));
        for (Eigen::Matrix4d* m : {&a, &b}) {
          m->applyOnTheRight(p, q, rotation.transpose());
          m->applyOnTheLeft(p, q, rotation);
        }
        vectors.applyOnTheRight(p, q, rotation.transpose());
      }
    }
  }
  return vectors;
}

Quaternion quaternion_of(const Eigen::Matrix2cd& m) {
  return Quaternion((m(0, 0) + m(1, 1)).real(), -(m(0, 1) + m(1, 0)).imag(),
                    (m(1, 0) - m(0, 1)).real(), (m(1, 1) - m(0, 0)).imag())
      .normalized();
}

/// The one-qubit operators that a rotation in the magic basis is the product of.
std::array<Quaternion, 2> factors(const Eigen::Matrix4d& rotation) {
  const Eigen::Matrix4cd product = magic_basis() * rotation * magic_basis().adjoint();
  // Each 2x2 block is an entry of the first factor times the second, whose determinant is 1.
  Eigen::Index row = 0;
  Eigen::Index column = 0;
  Eigen::Matrix2d sizes;
  for (Eigen::Index r = 0; r < 2; ++r) {
    for (Eigen::Index c = 0; c < 2; ++c) {
      sizes(r, c) = product.block<2, 2>(2 * r, 2 * c).squaredNorm();
    }
  }
  sizes.maxCoeff(&row, &column);
  const Eigen::Matrix2cd block = product.block<2, 2>(2 * row, 2 * column);
  const Eigen::Matrix2cd second = block / std::sqrt(block.determinant());
  Eigen::Matrix2cd first;
  for (Eigen::Index r = 0; r < 2; ++r) {
    for (Eigen::Index c = 0; c < 2; ++c) {
      first(r, c) = (second.adjoint() * product.block<2, 2>(2 * r, 2 * c)).trace() / 2.0;
    }
  }
  return {quaternion_of(first), quaternion_of(second)};
}

/// The steps that bring the coefficients in order; each keeps the operator up to its phase.
class Chamber {
 public:
  explicit Chamber(WeylForm& form) : form_(form) {}

  void enter() {
    for (int axis = 0; axis < 3; ++axis) shift(axis);
    sort(0, 1);
    sort(1, 2);
    sort(0, 1);
    if (c(0) < 0) negate(0, c(1) < 0 ? 1 : 2);
    if (c(1) < 0) negate(1, 2);
  }

 private:
  double& c(int axis) { return form_.c[static_cast<std::size_t>(axis)]; }

  /// exp(i pi/2 PP) is PP but for its phase.
  void shift(int axis) {
    const double quarters = std::round(c(axis) / (pi / 2));
    c(axis) -= quarters * (pi / 2);
    if (std::fmod(quarters, 2) == 0) return;
    for (Quaternion& after : form_.after) after = after * rotation_about(axis, pi);
  }
  /// The half turn about the axis between p and q exchanges PP and QQ.
  void sort(int p, int q) {
    if (std::abs(c(p)) >= std::abs(c(q))) return;
    std::swap(c(p), c(q));
    Quaternion exchange(0, 0, 0, 0);
    exchange.vec()[p] = exchange.vec()[q] = std::sqrt(0.5);
    for (Quaternion& after : form_.after) after = after * exchange;
    for (Quaternion& before : form_.before) before = exchange * before;
  }
  /// The half turn of place 0 about the third axis negates PP and QQ.
  void negate(int p, int q) {
    c(p) = -c(p);
    c(q) = -c(q);
    const Quaternion half = rotation_about(3 - p - q, pi);
    form_.after[0] = form_.after[0] * half;
    form_.before[0] = half * form_.before[0];
  }

  WeylForm& form_;
};

}  // namespace

WeylForm weyl_form(const Eigen::Matrix4cd& unitary) {
  // m = K diag(e^(i angles)) V^T with real rotations K and V, so that m^T m = V diag(...) V^T.
  const Eigen::Matrix4cd m = magic_basis().adjoint() * unitary * magic_basis();
  const Eigen::Matrix4cd square = m.transpose() * m;
  const Eigen::Matrix4d vectors = common_eigenvectors(square.real(), square.imag());
  Eigen::Vector4d angles;
  Eigen::Matrix4cd left = m * vectors;
  for (int k = 0; k < 4; ++k) {
    const Eigen::Vector4cd vector = vectors.col(k).cast<Complex>();
    angles[k] = std::arg(vector.dot(square * vector)) / 2;
    left.col(k) *= std::polar(1.0, -angles[k]);
  }
  Eigen::Matrix4d rotation = left.real();
  if (rotation.determinant() < 0) {
    rotation.col(0) *= -1;
    angles[0] += pi;
  }
  WeylForm form;
  form.after = factors(rotation);
  form.before = factors(vectors.transpose());
  form.c = {(angles[0] + angles[1] - angles[2] - angles[3]) / 4,
            (-angles[0] + angles[1] - angles[2] + angles[3]) / 4,
            (angles[0] - angles[1] - angles[2] + angles[3]) / 4};
  Chamber(form).enter();
  return form;
}

std::array<double, 3> exact_coefficients(std::array<double, 3> c) {
  for (double& coefficient : c) {
    for (const double special : {0.0, pi / 4, -pi / 4}) {
      if (std::abs(coefficient - special) <= zero_coefficient) coefficient = special;
    }
  }
  return c;
}

int cnots_needed(const std::array<double, 3>& coefficients) {
  const std::array<double, 3> c = exact_coefficients(coefficients);
  if (c[2] != 0) return 3;
  if (c[1] != 0) return 2;
  if (c[0] == 0) return 0;
  return c[0] == pi / 4 ? 1 : 2;
}

Eigen::Matrix4cd kronecker(const Eigen::Matrix2cd& first, const Eigen::Matrix2cd& second) {
  Eigen::Matrix4cd product;
  for (Eigen::Index r = 0; r < 2; ++r) {
    for (Eigen::Index c = 0; c < 2; ++c) product.block<2, 2>(2 * r, 2 * c) = first(r, c) * second;
  }
  return product;
}

}  // namespace zelt::braidwerk::internal
