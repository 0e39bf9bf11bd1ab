#pragma once

#include <Eigen/Core>

namespace zelt::braidwerk::internal {

/// Splits a diagonal matrix off a unitary one of two qubits, unitary = diagonal rest, such that the
/// rest needs at most two CNOTs. `unitary` becomes the rest; returns the diagonal. V. V. Shende,
/// I. L. Markov, S. S. Bullock, Physical Review A 69 (2004) 062321.
Eigen::Vector4cd diagonal_split_off(Eigen::Matrix4cd& unitary);

}  // namespace zelt::braidwerk::internal
