#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// How much every gate changes the cost of a set of strings.
class GateCosts {
 public:
  /// Of the pairs of wires that may meet: the edges of a graph, or all where it is null.
  GateCosts(int qubits, const BitGraph* graph);

  struct Pair {
    int a, b;  // a < b
  };
  const std::vector<Pair>& pairs() const { return pairs_; }
  static Gate gate(const Pair& pair, int k) {
    return {end_of(pair.a, k / 3 + 1), end_of(pair.b, k % 3 + 1)};
  }
  /// Of the gates of a pair, by label on the first wire, then on the second.
  const std::array<std::int64_t, 9>& of(int pair) const {
    return costs_[static_cast<std::size_t>(pair)];
  }
  std::array<std::int64_t, 9>& of(int pair) { return costs_[static_cast<std::size_t>(pair)]; }
  std::int64_t of(const Gate& gate) const {
    const auto a = static_cast<std::size_t>(wire_of(gate.a));
    const auto b = static_cast<std::size_t>(wire_of(gate.b));
    const int pair = index_[a * static_cast<std::size_t>(qubits_) + b];
    return of(pair)[static_cast<std::size_t>(3 * label_of(gate.a) + label_of(gate.b) - 4)];
  }

 private:
  int qubits_;
  std::vector<Pair> pairs_;
  std::vector<int> index_;
  std::vector<std::array<std::int64_t, 9>> costs_;
};

/// Where all wires meet and strings cost by their weights, all gates in one pass: for each two
/// letters of a string it is noted what the string gains if they become one, and what it loses if
/// they stand alone and become two.
class PairTable {
 public:
  explicit PairTable(int qubits);

  void clear();
  /// A string, its letters given as 3 * qubit + label - 1, ascending; what a letter less takes off
  /// its cost, and what one more adds.
  void add(const int* letters, int count, std::uint32_t less, std::uint32_t more);
  void score(GateCosts& costs) const;

 private:
  std::size_t stride_;
  std::vector<std::uint64_t> both_;  // less in the upper half, more in the lower, by two letters
  std::vector<std::uint32_t> alone_;
};

/// The same on a device, whatever a string costs that has letters on some wires.
class EdgeTable {
 public:
  explicit EdgeTable(const GateCosts& costs) : changes_(costs.pairs().size()) {}

  void clear();
  /// A string that may come out of a gate with or without a letter: by how much the cost changes.
  /// Its labels on the pair, 0 for none, as they are now.
  void add(int pair, int label_a, int label_b, std::int64_t without_a_or_with_b,
           std::int64_t without_b_or_with_a);
  void score(GateCosts& costs) const;

 private:
  struct Changes {
    std::array<std::int64_t, 9> without_a;  // where both ends have a letter
    std::array<std::int64_t, 9> without_b;
    std::array<std::int64_t, 3> with_b;  // where one of them has
    std::array<std::int64_t, 3> with_a;
  };
  std::vector<Changes> changes_;
};

}  // namespace zelt::braidwerk::internal
