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
/// returns for how many it is so then.
int reduce_rows(Word* rows, int count, int words, const int* order, int qubits, int done);

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
