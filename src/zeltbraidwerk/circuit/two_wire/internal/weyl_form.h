#pragma once

#include <Eigen/Core>
#include <array>

#include "zeltbraidwerk/circuit/two_wire/internal/place_gate.h"

namespace zelt::braidwerk::internal {

/// A two-qubit operator, up to its phase, as one-qubit operators around its interaction:
///
///   (after[0] x after[1]) exp(i (c[0] XX + c[1] YY + c[2] ZZ)) (before[0] x before[1]),
///
/// with pi/4 >= c[0] >= c[1] >= |c[2]|. Operators of equal c differ by one-qubit gates alone.
struct WeylForm {
  std::array<Quaternion, 2> before;  ///< by place
  std::array<Quaternion, 2> after;
  std::array<double, 3> c;
};

/// Of a unitary matrix. The c are right to about 1e-15 for close and for equal eigenvalues as well:
/// they are half the arguments of eigenvalues of a symmetric unitary matrix, whose real and
/// imaginary parts are diagonalised at once. J. Zhang, J. Vala, S. Sastry, K. B. Whaley, Physical
/// Review A 67 (2003) 042313.
WeylForm weyl_form(const Eigen::Matrix4cd& unitary);

/// How far a coefficient may be from another one, from 0 or from +-pi/4 to count as equal, which
/// changes the operator by as much. (Traces of the invariants would be off by the square.)
inline constexpr double zero_coefficient = 1e-11;

/// With 0 and +-pi/4 in the place of what counts as equal to them.
std::array<double, 3> exact_coefficients(std::array<double, 3> c);

/// The fewest CNOTs that make an operator of these coefficients: 0 for (0, 0, 0), 1 for
/// (pi/4, 0, 0), 2 where c[2] is 0, or else 3. V. V. Shende, I. L. Markov, S. S. Bullock, Physical
/// Review A 69 (2004) 062321.
int cnots_needed(const std::array<double, 3>& c);

/// The Kronecker product.
Eigen::Matrix4cd kronecker(const Eigen::Matrix2cd& first, const Eigen::Matrix2cd& second);

}  // namespace zelt::braidwerk::internal
