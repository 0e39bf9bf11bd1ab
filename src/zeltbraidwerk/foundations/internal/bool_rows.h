#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "zeltbraidwerk/foundations/boolean_matrix.h"

/// \file
/// Bits in 64-bit words, lowest bit first, and the way between them and BoolRow.

/// libstdc++ stores the bits of a BoolRow in words of this very form, so they are read and written
/// a word at a time. Elsewhere, and in its debug mode, a bit at a time.
#if defined(__GLIBCXX__) && !defined(_GLIBCXX_DEBUG) && defined(__linux__) && defined(__LP64__)
#define ZELTBRAIDWERK_BOOL_ROW_IS_WORDS 1
#else
#define ZELTBRAIDWERK_BOOL_ROW_IS_WORDS 0
#endif

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

/// The `count` bits (1 to 64) from place `first` on, the first of them lowest.
inline Word read_bits(const Word* words, std::size_t first, int count) {
  const std::size_t w = first / word_bits;
  const int shift = static_cast<int>(first % word_bits);
  Word bits = words[w] >> shift;
  if (shift + count > word_bits) bits |= words[w + 1] << (word_bits - shift);
  return bits & low_bits(count);
}

/// The way back: `bits` has nothing set beyond `count`. All other places stay.
inline void write_bits(Word* words, std::size_t first, int count, Word bits) {
  const std::size_t w = first / word_bits;
  const int shift = static_cast<int>(first % word_bits);
  words[w] = (words[w] & ~(low_bits(count) << shift)) | (bits << shift);
  if (const int over = shift + count - word_bits; over > 0) {
    words[w + 1] = (words[w + 1] & ~low_bits(over)) | (bits >> (count - over));
  }
}

/// Adds 1 to the bit-sliced numbers in the places that are set: digit k of all is at
/// digits[k * stride].
inline void add_ones(Word* digits, std::size_t stride, Word places) {
  for (; places != 0; digits += stride) {
    const Word both = *digits & places;
    *digits ^= places;
    places = both;
  }
}

/// Calls f for the number of each set bit, ascending. Each word is read once, before f sees its
/// bits, so f may change the words.
template <class F>
void for_each_bit(const Word* words, int count, F&& f) {
  for (int w = 0; w < count; ++w) {
    for (Word rest = words[w]; rest != 0; rest &= rest - 1) {
      f(w * word_bits + std::countr_zero(rest));
    }
  }
}

/// The same for the bits set in both.
template <class F>
void for_each_bit_of_both(const Word* a, const Word* b, int count, F&& f) {
  for (int w = 0; w < count; ++w) {
    for (Word rest = a[w] & b[w]; rest != 0; rest &= rest - 1) {
      f(w * word_bits + std::countr_zero(rest));
    }
  }
}

inline Word read_bits(const BoolRow& row, std::size_t first, int count) {
#if ZELTBRAIDWERK_BOOL_ROW_IS_WORDS
  return read_bits(row.begin()._M_p, first, count);
#else
  Word bits = 0;
  for (int k = count; k-- > 0;) bits = bits << 1 | Word{row[first + static_cast<std::size_t>(k)]};
  return bits;
#endif
}

inline void write_bits(BoolRow& row, std::size_t first, int count, Word bits) {
#if ZELTBRAIDWERK_BOOL_ROW_IS_WORDS
  write_bits(row.begin()._M_p, first, count, bits);
#else
  for (int k = 0; k < count; ++k) row[first + static_cast<std::size_t>(k)] = (bits >> k) & 1;
#endif
}

/// Calls visit(offset, width) for the pieces of at most a word that make up `count` bits.
template <typename Visit>
void each_word(int count, Visit&& visit) {
  for (int k = 0; k < count; k += word_bits) {
    visit(static_cast<std::size_t>(k), std::min(word_bits, count - k));
  }
}

/// Reads `count` bits of a row from place `first` on into words; bits of the last word beyond
/// `count` come out 0.
inline void pack_row(const BoolRow& row, std::size_t first, int count, Word* words) {
  each_word(count, [&](std::size_t k, int width) {
    words[k / word_bits] = read_bits(row, first + k, width);
  });
}

/// The way back; all other places of the row stay.
inline void unpack_row(const Word* words, std::size_t first, int count, BoolRow& row) {
  each_word(count, [&](std::size_t k, int width) {
    write_bits(row, first + k, width, words[k / word_bits] & low_bits(width));
  });
}

/// Adds `count` bits of one row, from place `from` on, to those of another from place `to` on. The
/// two stretches may be one and the same, but do not overlap in part.
inline void add_bits(const BoolRow& source, std::size_t from, BoolRow& target, std::size_t to,
                     int count) {
  each_word(count, [&](std::size_t k, int width) {
    write_bits(target, to + k, width,
               read_bits(target, to + k, width) ^ read_bits(source, from + k, width));
  });
}

}  // namespace zelt::braidwerk::internal
