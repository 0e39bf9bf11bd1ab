#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/boolean_matrix.h"
#include "zeltbraidwerk/foundations/internal/bool_rows.h"

namespace zelt::braidwerk::internal {

/// A matrix over GF(2), each row in 64-bit words, lowest bit first, one row after the other.
/// Invariant: the bits of a row at and beyond cols() are 0, so counts and comparisons need no mask.
///
/// This is the form in which every linear algorithm computes. Public functions take and return
/// BoolMatrix: they pack, run the kernel, unpack.
class BitMatrix {
 public:
  BitMatrix() = default;
  BitMatrix(int rows, int cols);  ///< all zero; sizes below 1 count as 0
  static BitMatrix identity(int n);

  /// The leading block of a BoolMatrix.
  static BitMatrix pack(const BoolMatrix& m, int rows, int cols);
  BoolMatrix unpack() const;
  /// Writes the block back into the leading part of a larger matrix; the rest of it stays.
  void unpack_into(BoolMatrix& m) const;

  int rows() const { return rows_; }
  int cols() const { return cols_; }
  int stride() const { return stride_; }  ///< words per row

  Word* row(int r) { return words_.data() + offset(r); }
  const Word* row(int r) const { return words_.data() + offset(r); }

  bool get(int r, int c) const { return (row(r)[c / word_bits] >> (c % word_bits)) & 1; }
  void set(int r, int c, bool value = true) {
    const Word bit = Word{1} << (c % word_bits);
    Word& word = row(r)[c / word_bits];
    word = value ? word | bit : word & ~bit;
  }
  void flip(int r, int c) { row(r)[c / word_bits] ^= Word{1} << (c % word_bits); }

  /// Row `to` becomes row `to` XOR row `from`, on columns `first_col` to the end.
  void add_row(int from, int to, int first_col = 0);
  /// Column `to` becomes column `to` XOR column `from`.
  void add_col(int from, int to);
  void swap_rows(int a, int b);
  /// Adds row `pivot` to every other row that has a one in the column.
  void clear_column(int pivot, int col);

  int row_weight(int r) const;
  int weight() const;
  bool is_identity() const;

  BitMatrix transposed() const;
  BitMatrix block(int first_row, int first_col, int rows, int cols) const;

  bool operator==(const BitMatrix&) const = default;

 private:
  std::size_t offset(int r) const {
    return static_cast<std::size_t>(r) * static_cast<std::size_t>(stride_);
  }

  int rows_ = 0;
  int cols_ = 0;
  int stride_ = 0;
  std::vector<Word> words_;
};

/// Ones in a, and in a XOR b, over `count` words.
int weight(const Word* a, int count);
int weight_of_sum(const Word* a, const Word* b, int count);

BitMatrix product(const BitMatrix& a, const BitMatrix& b);

/// Gauss-Jordan with row additions alone. On a singular matrix what cannot be repaired is left out.
BitMatrix inverse(BitMatrix m);

/// The row x with m x = b, of an invertible m and one column b.
BitMatrix solution(BitMatrix m, BitMatrix b);

bool is_invertible(BitMatrix m);

/// The factorisation of LU(); ends at the first step without a pivot. Returns the steps done.
int lu_factorise(BitMatrix& m, std::vector<int>& rows, std::vector<int>& cols);

inline BitMatrix::BitMatrix(int rows, int cols)
    : rows_(rows > 0 ? rows : 0),
      cols_(cols > 0 ? cols : 0),
      stride_(words_for(cols_)),
      words_(static_cast<std::size_t>(rows_) * static_cast<std::size_t>(stride_)) {}

inline void BitMatrix::add_row(int from, int to, int first_col) {
  int w = first_col / word_bits;
  if (w >= stride_) return;
  const Word* source = row(from);
  Word* target = row(to);
  target[w] ^= source[w] & ~low_bits(first_col % word_bits);
  for (++w; w < stride_; ++w) target[w] ^= source[w];
}

}  // namespace zelt::braidwerk::internal
