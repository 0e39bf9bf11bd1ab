#include "zeltbraidwerk/foundations/internal/bit_matrix.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/echelon.h"
#include "zeltbraidwerk/foundations/internal/row_sums.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr int lines_per_look = 16;
constexpr int least_at_once = 128;  // rows from which on several columns at once are quicker

ZELTBRAIDWERK_CLONES
int count_ones(const Word* a, int count) {
  int total = 0;
  for (int w = 0; w < count; ++w) total += std::popcount(a[w]);
  return total;
}

ZELTBRAIDWERK_CLONES
int count_ones_of_sum(const Word* a, const Word* b, int count) {
  int total = 0;
  for (int w = 0; w < count; ++w) total += std::popcount(a[w] ^ b[w]);
  return total;
}

/// Adds the pivot row to each row from `first` to `last - 1` that has a one in column `col`, in m
/// and, where given, in a second matrix. The pivot row is none of them.
ZELTBRAIDWERK_CLONES
void clear_column(Word* m, Word* second, int stride, int first_word, int second_stride, int pivot,
                  int col, int first, int last) {
  const int word = col / word_bits;
  const int shift = col % word_bits;
  const Word* __restrict source = m + static_cast<std::ptrdiff_t>(pivot) * stride;
  const Word* __restrict source2 = second + static_cast<std::ptrdiff_t>(pivot) * second_stride;
  for (int r = first; r < last; ++r) {
    Word* __restrict target = m + static_cast<std::ptrdiff_t>(r) * stride;
    if (!((target[word] >> shift) & 1)) continue;
    for (int w = first_word; w < stride; ++w) target[w] ^= source[w];
    Word* __restrict target2 = second + static_cast<std::ptrdiff_t>(r) * second_stride;
    for (int w = 0; w < second_stride; ++w) target2[w] ^= source2[w];
  }
}

ZELTBRAIDWERK_CLONES
void accumulate_product(const BitMatrix& a, const BitMatrix& b, BitMatrix& out, int first,
                        int last) {
  for (int r = first; r < last; ++r) {
    Word* __restrict target = out.row(r);
    for_each_bit(a.row(r), a.stride(), [&](int k) {
      const Word* __restrict source = b.row(k);
      for (int w = 0; w < b.stride(); ++w) target[w] ^= source[w];
    });
  }
}

ZELTBRAIDWERK_CLONES
void add_each_word(Word* __restrict target, const Word* __restrict source, int count) {
  for (int w = 0; w < count; ++w) target[w] ^= source[w];
}

/// The part of a product that comes from a few columns of a and the same rows of b.
void accumulate_columns(const BitMatrix& a, const BitMatrix& b, BitMatrix& out, RowSums& sums,
                        int first, int count) {
  sums.make(count, b.stride(),
            [&](int k, Word* sum) { add_words(sum, b.row(first + k), b.stride()); });
  for (int r = 0; r < a.rows(); ++r) {
    const auto which = read_bits(a.row(r), static_cast<std::size_t>(first), count);
    if (which != 0) add_words(out.row(r), sums[which], b.stride());
  }
}

/// First row from `first` on with a one in the column, or -1.
int find_pivot(const BitMatrix& m, int col, int first) {
  for (int r = first; r < m.rows(); ++r) {
    if (m.get(r, col)) return r;
  }
  return -1;
}

/// The forward pass of the elimination: repairs the diagonal by the first row below that can, and
/// clears the columns below it.
void reduce_to_upper(BitMatrix& m, BitMatrix& second) {
  const int n = m.rows();
  for (int c = 0; c < n; ++c) {
    if (c % lines_per_look == 0) question_point();
    if (!m.get(c, c)) {
      const int r = find_pivot(m, c, c + 1);
      if (r >= 0) {
        m.add_row(r, c);
        second.add_row(r, c);
      }
    }
    clear_column(m.row(0), second.row(0), m.stride(), c / word_bits, second.stride(), c, c, c + 1,
                 n);
  }
}

/// Transposes a 64 by 64 block in place, by halving swaps.
void transpose_block(Word (&block)[word_bits]) {
  Word mask = low_bits(word_bits / 2);
  for (int half = word_bits / 2; half != 0; half /= 2, mask ^= mask << half) {
    for (int k = 0; k < word_bits; k = (k + half + 1) & ~half) {
      const Word swapped = ((block[k] >> half) ^ block[k + half]) & mask;
      block[k] ^= swapped << half;
      block[k + half] ^= swapped;
    }
  }
}

}  // namespace

void add_words(Word* target, const Word* source, int count) {
  add_each_word(target, source, count);
}

int weight(const Word* a, int count) {
  return count_ones(a, count);
}

int weight_of_sum(const Word* a, const Word* b, int count) {
  return count_ones_of_sum(a, b, count);
}

BitMatrix BitMatrix::identity(int n) {
  BitMatrix m(n, n);
  for (int r = 0; r < n; ++r) m.set(r, r);
  return m;
}

BitMatrix BitMatrix::pack(const BoolMatrix& m, int rows, int cols) {
  BitMatrix packed(rows, cols);
  for (int r = 0; r < packed.rows_; ++r) {
    pack_row(m[static_cast<std::size_t>(r)], 0, packed.cols_, packed.row(r));
  }
  return packed;
}

BoolMatrix BitMatrix::unpack() const {
  BoolMatrix m(static_cast<std::size_t>(rows_), BoolRow(static_cast<std::size_t>(cols_)));
  unpack_into(m);
  return m;
}

void BitMatrix::unpack_into(BoolMatrix& m) const {
  for (int r = 0; r < rows_; ++r) unpack_row(row(r), 0, cols_, m[static_cast<std::size_t>(r)]);
}

void BitMatrix::add_col(int from, int to) {
  const int from_word = from / word_bits;
  const int from_shift = from % word_bits;
  const int to_word = to / word_bits;
  const int to_shift = to % word_bits;
  for (int r = 0; r < rows_; ++r) {
    Word* words = row(r);
    words[to_word] ^= ((words[from_word] >> from_shift) & 1) << to_shift;
  }
}

void BitMatrix::swap_rows(int a, int b) {
  if (a != b) std::swap_ranges(row(a), row(a) + stride_, row(b));
}

void BitMatrix::clear_column(int pivot, int col) {
  Word* words = words_.data();
  internal::clear_column(words, words, stride_, 0, 0, pivot, col, 0, pivot);
  internal::clear_column(words, words, stride_, 0, 0, pivot, col, pivot + 1, rows_);
}

int BitMatrix::row_weight(int r) const {
  return count_ones(row(r), stride_);
}

int BitMatrix::weight() const {
  return count_ones(words_.data(), static_cast<int>(words_.size()));
}

bool BitMatrix::is_identity() const {
  return rows_ == cols_ && *this == identity(rows_);
}

BitMatrix BitMatrix::transposed() const {
  BitMatrix result(cols_, rows_);
  Word block[word_bits];
  for (int r = 0; r < rows_; r += word_bits) {
    const int height = std::min(word_bits, rows_ - r);
    for (int w = 0; w < stride_; ++w) {
      std::fill(std::begin(block), std::end(block), Word{0});
      for (int k = 0; k < height; ++k) block[k] = row(r + k)[w];
      transpose_block(block);
      const int width = std::min(word_bits, cols_ - w * word_bits);
      for (int k = 0; k < width; ++k) result.row(w * word_bits + k)[r / word_bits] = block[k];
    }
  }
  return result;
}

BitMatrix BitMatrix::block(int first_row, int first_col, int rows, int cols) const {
  BitMatrix result(rows, cols);
  for (int r = 0; r < result.rows_; ++r) {
    each_word(result.cols_, [&](std::size_t c, int width) {
      result.row(r)[c / word_bits] =
          read_bits(row(first_row + r), static_cast<std::size_t>(first_col) + c, width);
    });
  }
  return result;
}

BitMatrix product(const BitMatrix& a, const BitMatrix& b) {
  BitMatrix result(a.rows(), b.cols());
  if (a.rows() >= least_at_once) {
    RowSums sums;
    for (int k = 0; k < a.cols(); k += RowSums::most_rows) {
      question_point();
      accumulate_columns(a, b, result, sums, k, std::min(RowSums::most_rows, a.cols() - k));
    }
    return result;
  }
  for (int r = 0; r < a.rows(); r += lines_per_look) {
    question_point();
    accumulate_product(a, b, result, r, std::min(r + lines_per_look, a.rows()));
  }
  return result;
}

BitMatrix inverse(BitMatrix m) {
  const int n = m.rows();
  BitMatrix result = BitMatrix::identity(n);
  if (n == 0) return result;
  if (n >= least_at_once) {
    BitMatrix reduced = m;
    if (std::cmp_equal(reduce_to_echelon(reduced, result).size(), n)) return result;
    result = BitMatrix::identity(n);
  }
  reduce_to_upper(m, result);
  for (int c = n - 1; c > 0; --c) {
    if (c % lines_per_look == 0) question_point();
    clear_column(m.row(0), result.row(0), m.stride(), c / word_bits, result.stride(), c, c, 0, c);
  }
  return result;
}

BitMatrix solution(BitMatrix m, BitMatrix b) {
  reduce_to_echelon(m, b);
  return b.transposed();
}

bool is_invertible(BitMatrix m) {
  BitMatrix none(m.rows(), 0);
  return std::cmp_equal(reduce_to_echelon(m, none).size(), m.rows());
}

}  // namespace zelt::braidwerk::internal
