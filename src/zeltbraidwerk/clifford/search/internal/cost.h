#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

namespace zelt::braidwerk::internal {

/// How far an operator is from one-qubit gates: the sum over its rows and those of its inverse of
/// f(w) = -((w + offset) / scale)^power, w the letters of the images of X, Z and Y on one qubit
/// together.
///
/// The power is negative: light rows count most, the more so the more qubits there are. The offset
/// keeps the lightest from drowning the others, in the search and in the sum.
struct OperatorCost {
  int twice_power = -8;  ///< halves are roots, so that values are the same on every machine
  double scale = 1;
  double offset = 0;
  double other_side = 1;  ///< weight of the rows of the inverse
  /// Gates are tried between about this number of wires of each side and all others.
  int most_wires = 1 << 14;

  std::vector<double> values(int most) const {
    std::vector<double> result(static_cast<std::size_t>(most) + 1);
    for (int w = 0; w <= most; ++w) {
      const double root = std::sqrt(((w > 0 ? w : 0.5) + offset) / scale);
      double value = 1;
      for (int k = twice_power; k < 0; ++k) value /= root;
      result[static_cast<std::size_t>(w)] = -value;
    }
    return result;
  }
};

}  // namespace zelt::braidwerk::internal
