#pragma once

#include <cstdint>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bool_rows.h"

namespace zelt::braidwerk::internal {

/// For X and Z on every qubit after a Clifford circuit U, the signed Pauli string before it, which
/// U turns into them: U-dagger P U. A gate costs a few words per 64 qubits, however long the
/// circuit is.
///
/// Letters are the codes of Pauli strings: 1 = X, 2 = Y, 3 = Z.
class Preimages {
 public:
  /// Before any gate.
  explicit Preimages(int qubits);

  int words() const { return words_; }  ///< of the X bits of a string, and of its Z bits

  void cnot(int control, int target);
  void cz(int a, int b);
  void h(int q);
  /// The rotation about a letter by so many times pi/2.
  void turn(int letter, int q, int quarters);

  /// Writes the string before U of a letter on a qubit after it, X words before Z words. True when
  /// it is negative.
  bool read(int letter, int q, Word* string) const;
  bool is_negative(int letter, int q) const;

 private:
  // i^power X^x Z^z: the row of X on qubit q is 2 q, that of Z the next one.
  Word* row(int k) { return strings_.data() + static_cast<std::size_t>(k) * width(); }
  const Word* row(int k) const { return strings_.data() + static_cast<std::size_t>(k) * width(); }
  std::size_t width() const { return 2 * static_cast<std::size_t>(words_); }
  /// Row k becomes row k times a string, times i^power.
  void multiply(int k, const Word* by, unsigned power);
  unsigned& power(int k) { return powers_[static_cast<std::size_t>(k)]; }
  unsigned power(int k) const { return powers_[static_cast<std::size_t>(k)]; }

  int words_;
  std::vector<Word> strings_;
  std::vector<unsigned> powers_;  // modulo 4
  mutable std::vector<Word> scratch_;
};

}  // namespace zelt::braidwerk::internal
