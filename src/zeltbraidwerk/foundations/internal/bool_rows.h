#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "zeltbraidwerk/foundations/boolean_matrix.h"

namespace zelt::braidwerk::internal {

using Word = std::uint64_t;
inline constexpr int word_bits = 64;

constexpr int words_for(int bits) {
  return (bits + word_bits - 1) / word_bits;
}

/// A word whose lowest `count` bits are set, count from 0 to 64.
constexpr Word low_bits(int count) {
  return count >= word_bits ? ~Word{0} : (Word{1} << count) - 1;
}

/// Reads `count` bits of a row from place `first` on into words, lowest bit first; bits of the last
/// word beyond `count` come out 0.
inline void pack_row(const BoolRow& row, int first, int count, Word* words) {
  if (count <= 0) return;
#if defined(__GLIBCXX__) && !defined(_GLIBCXX_DEBUG) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  // libstdc++ stores the bits in words of this very form, so an aligned row is a plain copy.
  if (first == 0) {
    static_assert(sizeof(*row.begin()._M_p) == sizeof(Word));
    std::memcpy(words, row.begin()._M_p, static_cast<std::size_t>(words_for(count)) * sizeof(Word));
    words[words_for(count) - 1] &= low_bits(count - (words_for(count) - 1) * word_bits);
    return;
  }
#endif
  std::fill_n(words, words_for(count), Word{0});
  for (int c = 0; c < count; ++c) {
    words[c / word_bits] |= Word{row[static_cast<std::size_t>(first + c)]} << (c % word_bits);
  }
}

/// The way back, into places `first` to `first + count - 1`; all other places stay.
inline void unpack_row(const Word* words, int first, int count, BoolRow& row) {
  if (count <= 0) return;
#if defined(__GLIBCXX__) && !defined(_GLIBCXX_DEBUG) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  if (first == 0) {
    const int whole = count / word_bits;
    auto* out = row.begin()._M_p;
    std::memcpy(out, words, static_cast<std::size_t>(whole) * sizeof(Word));
    if (const Word mask = low_bits(count % word_bits)) {
      out[whole] = (out[whole] & ~mask) | (words[whole] & mask);
    }
    return;
  }
#endif
  for (int c = 0; c < count; ++c) {
    row[static_cast<std::size_t>(first + c)] = (words[c / word_bits] >> (c % word_bits)) & 1;
  }
}

}  // namespace zelt::braidwerk::internal
