#pragma once

#include <Eigen/Core>
#include <array>
#include <complex>

namespace zelt::braidwerk::internal {

using Matrix8cd = Eigen::Matrix<std::complex<double>, 8, 8>;

/// A unitary matrix of four 4x4 blocks as
///
///   diag(left[0], left[1]) [[cos, -sin], [sin, cos]] diag(right[0], right[1]),
///
/// with unitary 4x4 matrices and diagonal matrices of the cosines and sines of `angles`, 0 to pi/2.
struct CosineSine {
  std::array<Eigen::Matrix4cd, 2> left;
  Eigen::Vector4d angles;
  std::array<Eigen::Matrix4cd, 2> right;
};

/// Right to about 1e-14 for any unitary matrix, with equal, zero and tiny angles as well: columns
/// of large cosines are taken from the sines, so that nothing is divided by a small number. C. F.
/// Van Loan, Numerische Mathematik 46 (1985) 479.
CosineSine cosine_sine(const Matrix8cd& unitary);

}  // namespace zelt::braidwerk::internal
