#pragma once

#include <cmath>
#include <vector>

namespace zelt::braidwerk::internal {

/// How far an operator is from one-qubit gates: the sum of f(w) over its rows of weight w, on both
/// sides, f(w) = -(w / scale)^power.
///
/// The power is negative: light rows count most, the more so the more qubits there are. What is
/// added up is then small next to what one gate changes, and a sum of all rows in floats would
/// drown it.
struct OperatorCost {
  int twice_power = -4;  ///< halves are roots, so that values are the same on every machine
  double scale = 1;
  bool grouped = false;     ///< w of the three labels of a wire together, not of each one
  double other_side = 1.0;  ///< weight of the rows of the inverse

  std::vector<double> values(int most) const {
    std::vector<double> result(static_cast<std::size_t>(most) + 1);
    for (int w = 0; w <= most; ++w) {
      const double root = std::sqrt((w > 0 ? w : 0.5) / scale);
      double value = 1;
      for (int k = twice_power; k < 0; ++k) value /= root;
      result[static_cast<std::size_t>(w)] = -value;
    }
    return result;
  }
};

}  // namespace zelt::braidwerk::internal
