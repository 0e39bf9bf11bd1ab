#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/gate.h"

namespace structures {

/// The gate matrices, row-major, entries modulo 4. Those on one qubit act on its exponents (z, x),
/// those on two qubits on (z of a, z of b, x of a, x of b); a is the control of CNOT. RXP is
/// exp(-i pi/4 X), RXM its inverse, and so on. Filled at load, read-only after.
/// @{
ZELTBRAIDWERK_EXPORT extern const std::vector<unsigned char> CNOT, CZ, XX, XX_INV;
ZELTBRAIDWERK_EXPORT extern const std::vector<unsigned char> H, RZP, RZM, RXP, RXM, RYP, RYM;
ZELTBRAIDWERK_EXPORT extern const std::vector<unsigned char> X, Y, Z;
/// @}

/// Row idx[p] of m becomes the sum over t of g[p][t] times the old row idx[t], modulo 4; all other
/// rows stay. m is (2n+1)-square, g k by k with k the length of idx. O(k^2 n); idx is unchanged.
ZELTBRAIDWERK_EXPORT void mult_left(std::vector<unsigned char>& m, int n,
                                    const std::vector<unsigned char>& g, std::vector<int>& idx);

/// Column idx[p] of m becomes the sum over t of g[t][p] times the old column idx[t], modulo 4.
ZELTBRAIDWERK_EXPORT void mult_right(std::vector<unsigned char>& m, int n,
                                     const std::vector<unsigned char>& g, std::vector<int>& idx);

/// An n-qubit Clifford operator U as one matrix of exponents modulo 4 on Weyl vectors: it maps the
/// exponent vector of P to that of U P U-dagger, signs included. Of its 2n+1 positions, 0 is a
/// scalar that no update touches, q+1 the exponent of Z and n+q+1 the exponent of X on qubit q.
///
/// A left update replaces T by G T: left updates in time order give the tableau of the circuit. A
/// right update replaces T by T times the inverse of G. Each update costs O(n). Two updates that
/// cancel as operators need not restore the entries: h_left twice leaves 3 where 1 stood, which
/// acts as the identity on Pauli operators.
struct ZELTBRAIDWERK_EXPORT OperatorTableau {
  std::vector<unsigned char> data;  ///< row-major, each entry 0 to 3
  int nbqbits = 0;                  ///< n

  OperatorTableau() = default;      ///< to be assigned a real tableau before use
  explicit OperatorTableau(int n);  ///< the identity

  /// The updates by one gate. rx_plus is "RX" by pi/2, rx_minus by -pi/2; the others likewise.
  /// @{
  void cnot_left(int a, int b);
  void cnot_right(int a, int b);
  void cz_left(int a, int b);
  void cz_right(int a, int b);
  void xx_left(int a, int b);
  void xx_right(int a, int b);
  void h_left(int q);
  void h_right(int q);
  void rx_plus_left(int q);
  void rx_plus_right(int q);
  void rx_minus_left(int q);
  void rx_minus_right(int q);
  void ry_plus_left(int q);
  void ry_plus_right(int q);
  void ry_minus_left(int q);
  void ry_minus_right(int q);
  void rz_plus_left(int q);
  void rz_plus_right(int q);
  void rz_minus_left(int q);
  void rz_minus_right(int q);
  void x_left(int q);
  void x_right(int q);
  void y_left(int q);
  void y_right(int q);
  void z_left(int q);
  void z_right(int q);
  /// @}
  void swap_left(int a, int b);   ///< three CNOT updates
  void swap_right(int a, int b);  ///< three CNOT updates

  /// The left update of a gate by name. A rotation takes any multiple of pi/2, to a tolerance of
  /// 1e-5; one with a symbolic angle changes nothing. "XX" acts on every pair of its qubits.
  /// Throws std::logic_error "Attempt to apply non-Clifford gate" on any other name ("I" and "S*"
  /// among them), "Non-clifford rotation angle" on any other angle; the tableau is then unchanged.
  void apply_left(const Gate& g);

  /// The right update of a gate by name. Angles are not reduced: 0, pi/2, -pi/2, pi and -pi alone
  /// are taken. "I" and "S*" change nothing; any other name or angle throws as apply_left does.
  void apply_right(const Gate& g);

  /// T becomes T times other. Throws std::logic_error
  /// "Can't multiply Tableaus of different dimensions!".
  void multiply_right(const OperatorTableau& other);

  /// R with R times T the identity modulo 4, by Gauss-Jordan, O(n^3).
  OperatorTableau inverse() const;

  std::string to_string() const;  ///< the text of operator<<

  bool operator==(const OperatorTableau&) const = default;
};

/// Row 0, a rule of dashes, then each row with its scalar entry in front of a bar.
ZELTBRAIDWERK_EXPORT std::ostream& operator<<(std::ostream& out, const OperatorTableau& t);

}  // namespace structures
