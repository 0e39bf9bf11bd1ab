#include "zeltbraidwerk/clifford/search/internal/state_kernels.h"

#include <bit>
#include <utility>

#include "zeltbraidwerk/foundations/internal/clones.h"

namespace zelt::braidwerk::internal {
namespace {

/// An element that anticommutes with the gate is multiplied by it: on the side where its letter
/// anticommutes it keeps one; the other letter vanishes if it was the gate's own, and appears if
/// there was none.
ZELTBRAIDWERK_CLONES void weigh_clone(const GateSide& a, const GateSide& b, const Word* now,
                                      std::size_t count, Word* then) {
  for (std::size_t e = 0; e < count; ++e) {
    const Word xa = a.x[e] >> a.shift;
    const Word za = a.z[e] >> a.shift;
    const Word xb = b.x[e] >> b.shift;
    const Word zb = b.z[e] >> b.shift;
    const Word odd_a = (xa & a.pz) ^ (za & a.px);
    const Word odd_b = (xb & b.pz) ^ (zb & b.px);
    const Word some_a = xa | za;
    const Word some_b = xb | zb;
    const Word odd = odd_a ^ odd_b;
    // Where a letter does not anticommute it is the gate's own or none.
    const Word falls = odd & ((odd_a & some_b) | (odd_b & some_a));
    const Word rises = odd & ~((odd_a & some_b) | (odd_b & some_a));
    then[e] = now[e] + (rises & 1) - (falls & 1);
  }
}

/// W is the number of words, or 0 where that is known at run time alone.
template <int W>
[[gnu::always_inline]] inline int reduce(Word* rows, int count, int words, const int* order,
                                         int qubits, int done, int* owned) {
  const int length = W > 0 ? 3 * W : 3 * words;
  for (int k = 0; k < 2 * qubits && done < count; ++k) {
    const int q = order[k / 2];
    const int place = ((k & 1) != 0 ? length / 3 : 0) + q / word_bits;
    const int shift = q % word_bits;
    int pivot = done;
    while (pivot < count && (rows[pivot * length + place] >> shift & 1) == 0) ++pivot;
    if (pivot == count) continue;
    Word* own = rows + done * length;
    if (pivot != done) {
      for (int w = 0; w < length; ++w) std::swap(own[w], rows[pivot * length + w]);
    }
    for (int r = 0; r < count; ++r) {
      Word* row = rows + r * length;
      const Word mask = r == done ? 0 : Word{0} - (row[place] >> shift & 1);
      for (int w = 0; w < length; ++w) row[w] ^= own[w] & mask;
    }
    owned[done++] = q;
  }
  return done;
}

/// All ones where the bit is set.
[[gnu::always_inline]] inline Word mask_of(Word word, int shift) {
  return Word{0} - (word >> shift & 1);
}

template <int W>
[[gnu::always_inline]] inline void take(Word* rows, int count, int words, int first, int qubit) {
  const int size = W > 0 ? W : words;
  const int length = 3 * size;
  const int place = qubit / word_bits;
  const int shift = qubit % word_bits;
  Word* a = rows + first * length;
  Word* b = a + length;
  const Word xa = mask_of(a[place], shift);
  const Word za = mask_of(a[size + place], shift);
  const Word xb = mask_of(b[place], shift);
  const Word zb = mask_of(b[size + place], shift);
  for (int w = 0; w < length; ++w) {
    const Word of_a = a[w];
    a[w] = (zb & of_a) ^ (za & b[w]);
    b[w] = (xb & of_a) ^ (xa & b[w]);
  }
  for (int r = 0; r < count; ++r) {
    if (r == first || r == first + 1) continue;
    Word* row = rows + r * length;
    const Word x = mask_of(row[place], shift);
    const Word z = mask_of(row[size + place], shift);
    for (int w = 0; w < length; ++w) row[w] ^= (a[w] & x) ^ (b[w] & z);
  }
}

template <int W>
[[gnu::always_inline]] inline int light_pairs(const Word* rows, int from, int to, int count,
                                              int words, int limit, LightPair* pairs, int room) {
  const int size = W > 0 ? W : words;
  int found = 0;
  for (int i = from; i < to; ++i) {
    const Word* a = rows + i * 3 * size;
    for (int j = i + 1; j < count; ++j) {
      const Word* b = rows + j * 3 * size;
      int weight = 0;
      for (int w = 0; w < size; ++w) {
        weight += std::popcount((a[w] ^ b[w]) | (a[size + w] ^ b[size + w]));
      }
      if (weight >= limit) continue;
      if (found == room) return found;
      pairs[found++] = {static_cast<std::uint16_t>(i), static_cast<std::uint16_t>(j), weight};
    }
  }
  return found;
}

ZELTBRAIDWERK_CLONES int reduce_clone(Word* rows, int count, int words, const int* order,
                                      int qubits, int done, int* owned) {
  switch (words) {
    case 1:
      return reduce<1>(rows, count, words, order, qubits, done, owned);
    case 2:
      return reduce<2>(rows, count, words, order, qubits, done, owned);
    case 3:
      return reduce<3>(rows, count, words, order, qubits, done, owned);
    case 4:
      return reduce<4>(rows, count, words, order, qubits, done, owned);
    default:
      return reduce<0>(rows, count, words, order, qubits, done, owned);
  }
}

ZELTBRAIDWERK_CLONES void take_clone(Word* rows, int count, int words, int first, int qubit) {
  switch (words) {
    case 1:
      return take<1>(rows, count, words, first, qubit);
    case 2:
      return take<2>(rows, count, words, first, qubit);
    default:
      return take<0>(rows, count, words, first, qubit);
  }
}

ZELTBRAIDWERK_CLONES int pairs_clone(const Word* rows, int from, int to, int count, int words,
                                     int limit, LightPair* pairs, int room) {
  switch (words) {
    case 1:
      return light_pairs<1>(rows, from, to, count, words, limit, pairs, room);
    case 2:
      return light_pairs<2>(rows, from, to, count, words, limit, pairs, room);
    case 3:
      return light_pairs<3>(rows, from, to, count, words, limit, pairs, room);
    case 4:
      return light_pairs<4>(rows, from, to, count, words, limit, pairs, room);
    default:
      return light_pairs<0>(rows, from, to, count, words, limit, pairs, room);
  }
}

}  // namespace

void weigh_after(const GateSide& a, const GateSide& b, const Word* now, std::size_t count,
                 Word* then) {
  weigh_clone(a, b, now, count, then);
}

int reduce_rows(Word* rows, int count, int words, const int* order, int qubits, int done,
                int* owned) {
  return reduce_clone(rows, count, words, order, qubits, done, owned);
}

void take_qubit(Word* rows, int count, int words, int first, int qubit) {
  take_clone(rows, count, words, first, qubit);
}

int find_light_pairs(const Word* rows, int from, int to, int count, int words, int limit,
                     LightPair* pairs, int room) {
  return pairs_clone(rows, from, to, count, words, limit, pairs, room);
}

}  // namespace zelt::braidwerk::internal
