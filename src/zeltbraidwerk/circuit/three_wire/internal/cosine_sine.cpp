#include "zeltbraidwerk/circuit/three_wire/internal/cosine_sine.h"

#include <Eigen/QR>
#include <Eigen/SVD>
#include <cmath>

namespace zelt::braidwerk::internal {

namespace {

using Eigen::Matrix4cd;
using Eigen::MatrixXcd;

/// Four orthonormal columns. The first ones are those of a matrix of full rank, whose columns are
/// orthogonal, divided by their lengths.
Matrix4cd completed(const MatrixXcd& columns) {
  Matrix4cd all = Matrix4cd::Zero();
  all.leftCols(columns.cols()) = columns;
  all = Eigen::HouseholderQR<Matrix4cd>(all).householderQ();
  for (Eigen::Index k = 0; k < columns.cols(); ++k) all.col(k) = columns.col(k).normalized();
  return all;
}

}  // namespace

CosineSine cosine_sine(const Matrix8cd& unitary) {
  constexpr double large = 0.75;   // of a cosine
  constexpr double noise = 1e-13;  // sines below are 0: their vectors would be random
  const Matrix4cd top = unitary.topLeftCorner<4, 4>();
  const Matrix4cd bottom = unitary.bottomLeftCorner<4, 4>();
  const Eigen::JacobiSVD<MatrixXcd> by_cosines(top, Eigen::ComputeFullU | Eigen::ComputeFullV);
  CosineSine form;
  form.left[0] = by_cosines.matrixU();
  Matrix4cd columns = by_cosines.matrixV();  // of the inverse of right[0]
  Eigen::Index larges = 0;                   // these come first
  while (larges < 4 && by_cosines.singularValues()[larges] > large) ++larges;
  const Eigen::Index others = 4 - larges;

  // Small cosines have large sines, whose vectors are well known; the rest of left[1] is for the
  // others.
  const Matrix4cd basis = completed(bottom * columns.rightCols(others));
  form.left[1].rightCols(others) = basis.leftCols(others);
  MatrixXcd rest = basis.rightCols(larges).adjoint() * bottom * columns.leftCols(larges);
  if (larges > 0) {
    if (rest.norm() < noise) rest.setZero();
    const Eigen::JacobiSVD<MatrixXcd> by_sines(rest, Eigen::ComputeFullU | Eigen::ComputeFullV);
    form.left[1].leftCols(larges) = basis.rightCols(larges) * by_sines.matrixU();
    columns.leftCols(larges) *= by_sines.matrixV();
    form.left[0].leftCols(larges) *= by_sines.matrixV();
  }
  form.right[0] = columns.adjoint();
  for (Eigen::Index k = 0; k < 4; ++k) {
    const double cosine = form.left[0].col(k).dot(top * columns.col(k)).real();
    const double sine = form.left[1].col(k).dot(bottom * columns.col(k)).real();
    form.angles[k] = std::atan2(sine, cosine);
    form.right[1].row(k) =
        std::cos(form.angles[k]) * form.left[1].col(k).adjoint() *
            unitary.bottomRightCorner<4, 4>() -
        std::sin(form.angles[k]) * form.left[0].col(k).adjoint() * unitary.topRightCorner<4, 4>();
  }
  return form;
}

}  // namespace zelt::braidwerk::internal
