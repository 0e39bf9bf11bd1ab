#pragma once

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/operator_tableau.h"

namespace structures {

/// Exponents (scalar, z, x) of the four letters. Y is held as (3, 3), which is plus Y as (1, 1) is.
/// @{
ZELTBRAIDWERK_EXPORT extern const std::vector<unsigned char> WI, WX, WZ, WY;
/// @}

/// The way back: (sign, letter) of the exponents (z, x) at index 4 z + x; sign 1 is minus, letters
/// 0 to 3 are I, X, Y, Z.
ZELTBRAIDWERK_EXPORT extern const std::vector<std::pair<unsigned char, unsigned char>> SILUAP;

/// One n-qubit Pauli operator as exponents modulo 4: position 0 a scalar, q+1 the exponent z of Z
/// and n+q+1 the exponent x of X on qubit q. Per qubit it is i^(z x) X^x Z^z.
struct ZELTBRAIDWERK_EXPORT WeylOperator {
  std::vector<unsigned char> data;  ///< the exponents, each 0 to 3
  int nbqbits = 0;                  ///< n

  /// From letters, the one at place q for qubit q. Any letter but X, Y and Z reads as I.
  explicit WeylOperator(std::string s);

  /// The Pauli operator becomes U P U-dagger, U the operator of t, which must have the same
  /// nbqbits. O(n^2).
  void conjugate_with(const OperatorTableau& t);

  /// (true for minus, the letters).
  std::pair<bool, std::string> to_pauli() const;

  std::string to_string() const;  ///< the text of operator<<

  static WeylOperator pauli_z(int q, int n);  ///< Z on qubit q of n
  static WeylOperator pauli_x(int q, int n);  ///< X on qubit q of n

  bool operator==(const WeylOperator&) const = default;
};

/// `( 0 | z z |x x )`. No line end.
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(std::ostream& out, const WeylOperator& w);

}  // namespace structures
