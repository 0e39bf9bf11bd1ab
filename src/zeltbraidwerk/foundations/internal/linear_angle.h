#pragma once

#include <map>
#include <string>
#include <vector>

#include "zeltbraidwerk/foundations/parameter.h"

namespace zelt::braidwerk::internal {

/// An angle as a constant and a sum of symbols with coefficients, in radians. Sums and differences
/// of symbolic angles are told apart by it, and cancel.
struct LinearAngle {
  double constant = 0;
  std::map<std::string, double> coefficients;  ///< by name; none is 0

  LinearAngle() = default;
  /// Reads the prefix notation of symbolic angles; text that is not in it is one name.
  explicit LinearAngle(const structures::Parameter& angle);

  bool is_number() const { return coefficients.empty(); }
  void add(const LinearAngle& other, double times);

  /// One angle, or two to be added, of which the second is the constant: symbolic angles are text,
  /// which holds numbers to six decimals.
  std::vector<structures::Parameter> parameters() const;
};

}  // namespace zelt::braidwerk::internal
