#pragma once

#include <iosfwd>
#include <string>

#include "zeltbraidwerk/export.h"

namespace structures {

/// A rotation angle in radians, numeric or symbolic.
///
/// A symbolic expression is text in prefix notation, tokens separated by one blank: "+ " and two
/// operands, or "UMINUS " and one. Operands are names, expressions, or numbers with six decimals.
/// The library never parses an expression; flip_sign alone looks at its beginning.
struct ZELTBRAIDWERK_EXPORT Parameter {
  bool is_abstract = false;  ///< whether it is an expression
  std::string expression;    ///< empty for a number
  double value = 0.0;        ///< 0 for an expression

  Parameter() = default;
  /// A number or an expression.
  /// @{
  Parameter(double d);              // NOLINT(google-explicit-constructor): an angle is a Parameter
  Parameter(const std::string& s);  // NOLINT(google-explicit-constructor): so is an expression
  static Parameter from_double(double d);
  static Parameter from_string(const std::string& s);
  /// @}

  /// Numeric: the floating remainder of (d + value) by 2 pi, with the sign of the sum.
  /// Symbolic: the expression becomes "+ ", d with six decimals, " ", the old expression.
  void add(double d);

  /// Symbolic: the expression becomes "+ ", s, " ", the old expression. A number turns symbolic:
  /// "+ ", the old value with six decimals, " ", s.
  void add(const std::string& s);

  /// add() of the other's value or expression, so numeric sums are always wrapped.
  Parameter& operator+=(const Parameter& p);

  /// The value. Throws std::logic_error "Can't get numeric value of an abstract parameter".
  double get_numeric_value() const;

  /// The negated angle, not wrapped. Symbolic: a leading "UMINUS " is taken off, or else put in
  /// front, so that two flips give the expression back.
  Parameter flip_sign() const;

  bool operator==(const Parameter&) const = default;
};

/// The expression, or the value in the stream's own floating format.
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(std::ostream& out, const Parameter& p);

}  // namespace structures
