#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "zeltbraidwerk/foundations/internal/bool_rows.h"

namespace zelt::braidwerk::internal {

/// The letters of many Pauli strings on one qubit, one word each, and the label that a gate has
/// there as masks of all ones or none.
struct GateSide {
  const Word* x;
  const Word* z;
  int shift;  ///< of the qubit in a word
  Word px;
  Word pz;

  /// Whether string e anticommutes with the label, in the lowest bit.
  Word odd(std::size_t e) const { return ((x[e] & pz) ^ (z[e] & px)) >> shift; }
};

/// The weights that strings have after a gate, from those before it.
void weigh_after(const GateSide& a, const GateSide& b, const Word* now, std::size_t count,
                 Word* then);

/// Strings as rows: `words` words of X bits, as many of Z bits, and as many that go along. Row
/// operations leave as many rows as there can be the only one with some letter on a qubit of its
/// own, X or Z, the first ones of `order`. The first `done` rows are so for qubits before these;
/// returns for how many it is so then. `owned` has the qubit of each of these rows; where two rows
/// have the same one, the first has X there and the next Z.
int reduce_rows(Word* rows, int count, int words, const int* order, int qubits, int done,
                int* owned);

/// Whether two rows have letters on the qubit that anticommute.
inline bool anticommute_at(const Word* a, const Word* b, int words, int qubit) {
  const int place = qubit / word_bits;
  const Word both = (a[place] & b[words + place]) ^ (a[words + place] & b[place]);
  return (both >> (qubit % word_bits) & 1) != 0;
}

/// Row operations by which row `first`, alone of all, has X on the qubit, and the next one Z. Their
/// letters there must anticommute.
void take_qubit(Word* rows, int count, int words, int first, int qubit);

inline int row_weight(const Word* row, int words) {
  int weight = 0;
  for (int w = 0; w < words; ++w) weight += std::popcount(row[w] | row[words + w]);
  return weight;
}

struct LightPair {
  std::uint16_t first;
  std::uint16_t second;
  int weight;  ///< of the product
};

/// Writes the pairs of such rows whose products are lighter than `limit`, at most `room` of them,
/// and returns their number. The first of a pair is one of rows `from` to `to`.
int find_light_pairs(const Word* rows, int from, int to, int count, int words, int limit,
                     LightPair* pairs, int room);

}  // namespace zelt::braidwerk::internal
