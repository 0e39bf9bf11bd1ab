#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// How much every gate changes the cost of a set of strings, all gates in one pass: for each two
/// letters of a string it is noted what the string gains if they become one, and what it loses if
/// they stand alone and become two.
class PairTable {
 public:
  /// The pairs of wires that may meet: the edges of a graph, or all where it is null.
  PairTable(int qubits, const BitGraph* graph);

  struct Pair {
    int a, b;
  };
  const std::vector<Pair>& pairs() const { return pairs_; }
  /// -1 where the wires may not meet; a < b.
  int pair_of(int a, int b) const {
    return index_[static_cast<std::size_t>(a) * static_cast<std::size_t>(qubits_) +
                  static_cast<std::size_t>(b)];
  }

  void clear();
  /// A string, its letters given as 3 * qubit + label - 1, ascending; what a letter less takes off
  /// its cost, and what one more adds.
  void add(const int* letters, int count, std::uint32_t less, std::uint32_t more);
  /// What the gates cost, of all strings added since.
  void score();

  static Gate gate(const Pair& pair, int k) {
    return {end_of(pair.a, k / 3 + 1), end_of(pair.b, k % 3 + 1)};
  }
  /// Of the gates of a pair, by label on the first wire, then on the second.
  const std::array<std::int64_t, 9>& costs(int pair) const {
    return costs_[static_cast<std::size_t>(pair)];
  }
  std::int64_t cost(const Gate& gate) const {
    const auto& of_pair = costs(pair_of(wire_of(gate.a), wire_of(gate.b)));
    return of_pair[static_cast<std::size_t>(3 * label_of(gate.a) + label_of(gate.b) - 4)];
  }

 private:
  int qubits_;
  std::size_t stride_;
  std::vector<Pair> pairs_;
  std::vector<int> index_;
  std::vector<std::uint64_t> both_;  // less in the upper half, more in the lower, by two letters
  std::vector<std::uint32_t> alone_;
  std::vector<std::array<std::int64_t, 9>> costs_;
};

}  // namespace zelt::braidwerk::internal
