#pragma once

#include <map>
#include <string>

#include "zeltbraidwerk/foundations/parameter.h"

namespace zelt::braidwerk::internal {

/// An angle as a constant and a sum of symbols with coefficients, in radians. Sums and differences
/// of symbolic angles are told apart by it, and cancel.
struct LinearAngle {
  double constant = 0;
  std::map<std::string, double> coefficients;  ///< by name; none is 0

  LinearAngle() = default;
  /// Reads the prefix notation of symbolic angles, in which an operand may also be a number, a "*"
  /// and a name, as in "0.5*a". Text that is not in it is one name.
  explicit LinearAngle(const structures::Parameter& angle);

  bool is_number() const { return coefficients.empty(); }
  /// Coefficients that cancel up to rounding are 0 then.
  void add(const LinearAngle& other, double times);

  /// The same angle, whose text keeps all digits: a sum of names, of "UMINUS " and a name, or of a
  /// number, "*" and a name; and last the constant where it is not 0.
  structures::Parameter parameter() const;
};

}  // namespace zelt::braidwerk::internal
