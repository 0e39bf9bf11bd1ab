#include "zeltbraidwerk/clifford/search/internal/state_group.h"

#include <algorithm>
#include <array>
#include <numeric>

#include "zeltbraidwerk/foundations/internal/clones.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr Word free_place = ~Word{0};

constexpr std::size_t index(int k) {
  return static_cast<std::size_t>(k);
}

/// The letters of all elements on one qubit, and the label that a gate has there.
struct Side {
  const Word* x;
  const Word* z;
  int shift;
  Word px;
  Word pz;
};

/// An element that anticommutes with the gate is multiplied by it: on the side where its letter
/// anticommutes it keeps one; the other letter vanishes if it was the gate's own, and appears if
/// there was none.
ZELTBRAIDWERK_CLONES void weigh_behind(const Side& a, const Side& b, const Word* now,
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

inline int string_weight(const Word* row, int words) {
  int weight = 0;
  for (int w = 0; w < words; ++w) weight += std::popcount(row[w] | row[words + w]);
  return weight;
}

/// Rows of x, z and parts, each of W words: W = 0 where that is known at run time alone.
template <int W>
[[gnu::always_inline]] inline void reduce(Word* rows, int count, int words, const int* order,
                                          int qubits) {
  const int length = W > 0 ? 3 * W : 3 * words;
  int done = 0;
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
    ++done;
  }
}

struct LightPair {
  std::uint16_t first;
  std::uint16_t second;
  int weight;
};

/// Writes the pairs of rows whose products are lighter than `limit`, at most `room` of them.
template <int W>
[[gnu::always_inline]] inline int light_pairs(const Word* rows, int count, int words, int limit,
                                              LightPair* pairs, int room) {
  const int size = W > 0 ? W : words;
  int found = 0;
  for (int i = 0; i < count; ++i) {
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

ZELTBRAIDWERK_CLONES void reduce_rows(Word* rows, int count, int words, const int* order,
                                      int qubits) {
  switch (words) {
    case 1:
      return reduce<1>(rows, count, words, order, qubits);
    case 2:
      return reduce<2>(rows, count, words, order, qubits);
    default:
      return reduce<0>(rows, count, words, order, qubits);
  }
}

ZELTBRAIDWERK_CLONES int find_light_pairs(const Word* rows, int count, int words, int limit,
                                          LightPair* pairs, int room) {
  switch (words) {
    case 1:
      return light_pairs<1>(rows, count, words, limit, pairs, room);
    case 2:
      return light_pairs<2>(rows, count, words, limit, pairs, room);
    default:
      return light_pairs<0>(rows, count, words, limit, pairs, room);
  }
}

/// What is needed while a group is looked at, once a thread.
struct Scratch {
  std::vector<Word> weights;
  std::vector<Word> parts;
  std::vector<std::uint16_t> basis;
  std::vector<std::uint8_t> in_basis;
  std::vector<Word> heavier;
  std::vector<Word> rows;
  std::vector<int> order;
  std::vector<LightPair> pairs;
};

Scratch& scratch() {
  static thread_local Scratch mine;
  return mine;
}

}  // namespace

StateGroup::StateGroup(const PauliFrame& generators)
    : n_(generators.qubits()),
      words_(words_for(n_)),
      capacity_(index(words_for(4 * n_) * word_bits)),
      labels_(index(n_)) {
  const std::size_t cells = index(words_) * capacity_;
  x_.resize(cells);
  z_.resize(cells);
  parts_.resize(cells);
  weights_.assign(capacity_, free_place);
  in_basis_.resize(capacity_);
  const BitMatrix x = generators.x_planes().transposed();
  const BitMatrix z = generators.z_planes().transposed();
  for (int r = 0; r < n_; ++r) {
    const std::size_t e = index(r);
    for (int w = 0; w < words_; ++w) {
      x_[at(w, e)] = x.row(r)[w];
      z_[at(w, e)] = z.row(r)[w];
    }
    parts_[at(r / word_bits, e)] = Word{1} << (r % word_bits);
    weights_[e] = index(generators.weight(r));
    basis_.push_back(static_cast<std::uint16_t>(r));
    in_basis_[e] = 1;
  }
  settle();
}

/// For each weight the generators that are heavier, on parts.
void StateGroup::find_heavier(const std::vector<std::uint16_t>& basis,
                              const std::vector<Word>& weights, std::vector<Word>& heavier) const {
  const auto words = index(words_);
  heavier.assign(words * index(n_ + 2), 0);
  for (std::size_t k = 0; k < index(n_); ++k) {
    heavier[weights[basis[k]] * words + k / word_bits] |= Word{1} << (k % word_bits);
  }
  for (std::size_t w = 0; w < words; ++w) {
    Word above = 0;
    for (std::size_t weight = index(n_ + 2); weight-- > 0;) {
      std::swap(above, heavier[weight * words + w]);
      above |= heavier[weight * words + w];
    }
  }
}
