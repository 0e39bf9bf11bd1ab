#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/pauli/search/internal/letter_rows.h"
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
  /// Of the nine gates of a pair, by label on the first wire, then on the second.
  std::int64_t of(const Pair& pair, int k) const {
    const std::size_t slot = slot_of(pair);
    return blocks_[slot / lanes].costs[static_cast<std::size_t>(k)][slot % lanes];
  }
  std::int64_t of(const Gate& gate) const {
    return of({wire_of(gate.a), wire_of(gate.b)}, 3 * label_of(gate.a) + label_of(gate.b) - 4);
  }
  /// The least of them.
  std::int64_t least(const Pair& pair) const {
    const std::size_t slot = slot_of(pair);
    return blocks_[slot / lanes].least[slot % lanes];
  }
  void put(const Pair& pair, const std::array<std::int64_t, 9>& costs);

  /// Those of some pairs side by side.
  static constexpr std::size_t lanes = 8;
  struct Block {
    std::int64_t costs[9][lanes];
    std::int64_t least[lanes];
  };
  /// Where all wires meet: of `a` and the wires lanes * k to lanes * (k + 1) - 1, some of them
  /// later ones.
  Block& block_of(int a, std::size_t k) {
    return blocks_[first_[static_cast<std::size_t>(a)] + k - first_of(a)];
  }
  static std::size_t first_of(int a) { return static_cast<std::size_t>(a + 1) / lanes; }

 private:
  std::size_t slot_of(const Pair& pair) const {
    return slots_[static_cast<std::size_t>(pair.a) * static_cast<std::size_t>(qubits_) +
                  static_cast<std::size_t>(pair.b)];
  }

  int qubits_;
  std::vector<Pair> pairs_;
  std::vector<std::size_t> first_;    // blocks, by wire; where all wires meet
  std::vector<std::uint32_t> slots_;  // by wire and wire
  std::vector<Block> blocks_;
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

  struct Pull {
    int row;
    std::uint32_t less;
    std::uint32_t more;
  };
  /// The same for some rows of one weight: several times as fast, as no loop has to be guessed.
  void add(const LetterRows& rows, int weight, const std::vector<Pull>& pulls);

  void score(GateCosts& costs);

 private:
  int qubits_;
  std::size_t width_;                // of a row of one label: the qubits, and some lanes not used
  std::vector<std::size_t> column_;  // by letter: label after label
  std::vector<std::uint64_t> both_;  // less in the upper half, more in the lower, by two letters
  std::vector<std::int64_t> alone_;  // by column
  std::vector<int> letters_;         // scratch
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
