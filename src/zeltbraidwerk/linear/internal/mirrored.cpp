#include "zeltbraidwerk/linear/internal/mirrored.h"

namespace zelt::braidwerk::internal {
namespace {

Word reverse_bits(Word x) {
  Word mask = low_bits(word_bits);
  for (int half = word_bits / 2; half != 0; half /= 2) {
    mask ^= mask << half;
    x = ((x >> half) & mask) | ((x & mask) << half);
  }
  return x;
}

}  // namespace

BitMatrix mirrored(const BitMatrix& m) {
  BitMatrix result(m.rows(), m.cols());
  const int last = m.stride() - 1;
  const int shift = m.stride() * word_bits - m.cols();
  for (int r = 0; r < m.rows(); ++r) {
    const Word* source = m.row(m.rows() - 1 - r);
    Word* target = result.row(r);
    for (int w = 0; w <= last; ++w) {
      target[w] = reverse_bits(source[last - w]) >> shift;
      if (shift != 0 && w < last) {
        target[w] |= reverse_bits(source[last - w - 1]) << (word_bits - shift);
      }
    }
  }
  return result;
}

}  // namespace zelt::braidwerk::internal
