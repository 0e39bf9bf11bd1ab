#pragma once

#include <array>
#include <span>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/clifford_gate.h"

namespace zelt::braidwerk::internal {

/// One Pauli string as codes, the one at place q for qubit q: 0 = I, 1 = X, 2 = Y, 3 = Z.
using PauliLetters = std::vector<unsigned char>;

constexpr unsigned char letter_of(bool x, bool z) {
  return static_cast<unsigned char>(int{x} ^ (z ? 3 : 0));
}
constexpr bool letter_has_x(unsigned char letter) {
  return letter == 1 || letter == 2;
}
constexpr bool letter_has_z(unsigned char letter) {
  return letter >= 2;
}

/// The gates on one qubit; the rotations are by plus and minus pi/2.
enum class OneQubitGate { h, s, s_dagger, rx_plus, rx_minus, ry_plus, ry_minus, x, y, z };
enum class TwoQubitGate { cnot, cz, swap, xx, xx_inverse };

/// Many signed Pauli strings, all carried through one Clifford circuit. They are held bit-sliced:
/// for each qubit one plane of X bits and one of Z bits over all rows, and one plane of signs (a
/// set bit is minus), 64 rows per word. Y is X and Z. A gate U turns every row P into U P U-dagger
/// and costs a few words per 64 rows, whatever the number of qubits.
///
/// Invariant: bits at and beyond rows() are 0 in every plane.
class PauliFrame {
 public:
  PauliFrame() = default;
  PauliFrame(int qubits, int rows);  ///< identity strings, all plus
  /// One row of each matrix per qubit, one column per string; all plus.
  PauliFrame(BitMatrix x, BitMatrix z) : x_(std::move(x)), z_(std::move(z)), signs_(1, x_.cols()) {}

  /// Strings without signs, cut or filled with I to `qubits` letters. Throws std::out_of_range
  /// "map::at:  key not found" on a code above 3.
  static PauliFrame pack(const std::vector<PauliLetters>& strings, int qubits);

  int qubits() const { return x_.rows(); }
  int rows() const { return x_.cols(); }
  int words() const { return x_.stride(); }  ///< words a plane

  Word* x(int q) { return x_.row(q); }
  const Word* x(int q) const { return x_.row(q); }
  Word* z(int q) { return z_.row(q); }
  const Word* z(int q) const { return z_.row(q); }
  Word* signs() { return signs_.row(0); }
  const Word* signs() const { return signs_.row(0); }
  const BitMatrix& x_planes() const { return x_; }  ///< one row per qubit
  const BitMatrix& z_planes() const { return z_; }

  unsigned char letter(int r, int q) const { return letter_of(x_.get(q, r), z_.get(q, r)); }
  void set_letter(int r, int q, unsigned char letter) {
    x_.set(q, r, letter_has_x(letter));
    z_.set(q, r, letter_has_z(letter));
  }
  bool is_negative(int r) const { return signs_.get(0, r); }
  void set_negative(int r, bool negative = true) { signs_.set(0, r, negative); }
  PauliLetters letters(int r) const;
  /// Writes the letters of all rows into `strings`, as many of each as its string has room for.
  void unpack_into(std::vector<PauliLetters>& strings) const;

  /// Row k of the result is row rows[k] of this frame.
  PauliFrame select(std::span<const int> rows) const;

  void apply(OneQubitGate gate, int q);
  void apply(TwoQubitGate gate, int a, int b);
  void h(int q) { apply(OneQubitGate::h, q); }
  void s(int q) { apply(OneQubitGate::s, q); }
  void s_dagger(int q) { apply(OneQubitGate::s_dagger, q); }
  void rx_plus(int q) { apply(OneQubitGate::rx_plus, q); }
  void rx_minus(int q) { apply(OneQubitGate::rx_minus, q); }
  void cnot(int control, int target) { apply(TwoQubitGate::cnot, control, target); }
  void cz(int a, int b) { apply(TwoQubitGate::cz, a, b); }

  void apply(const CliffordGate& gate) { apply(gate, 0, words()); }
  /// On some words of the rows alone.
  void apply(const CliffordGate& gate, int first_word, int end_word);
  /// A gate by name. Takes the names and angles that OperatorTableau::apply_left takes, and throws
  /// what it throws; a rotation by a symbolic angle changes nothing.
  void apply(const structures::Gate& gate);

  /// Number of letters other than I in a row, and in each row.
  int weight(int r) const;
  std::vector<int> weights() const;
  /// The weights on the qubits listed, bit-sliced: bit k of the weight of row r is bit r of row k.
  BitMatrix weight_planes(std::span<const int> qubits) const;
  /// Of the rows with a letter other than I on one of the qubits listed, the first of those with
  /// the fewest such letters; -1 when there is none.
  int lightest_row(std::span<const int> qubits) const;

  /// How many rows hold each of the four letters on a qubit; with a mask, among its rows.
  std::array<int, 4> letter_counts(int q, const Word* mask = nullptr) const;

  /// The letters other than I of each row: one row per string, one column per qubit.
  BitMatrix supports() const;

  bool commute(int r, int s) const;
  /// Entry (r, s): whether rows r and s do not commute.
  BitMatrix anticommuting() const;
  /// Fills a plane with the rows that anticommute with row r of `strings`, a frame on as many
  /// qubits, which may be this one.
  void anticommuting_rows(const PauliFrame& strings, int r, Word* out) const;

 private:
  BitMatrix x_;
  BitMatrix z_;
  BitMatrix signs_{1, 0};
};

}  // namespace zelt::braidwerk::internal
