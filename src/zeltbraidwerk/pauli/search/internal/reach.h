#pragma once

#include <cstdint>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bool_rows.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"

namespace zelt::braidwerk::internal {

/// How far a string is from a single letter on a connected graph: one more than the gates on edges
/// that it takes when its letters are gathered along a shortest tree of paths between them. Each
/// wire between letters takes a gate to get a letter, each edge one to lose it. Some gate always
/// brings a string nearer by one. Where all wires meet this is the string's weight.
class Reach {
 public:
  Reach() = default;
  explicit Reach(const BitGraph& graph);

  /// Of a string with letters on these wires.
  int operator()(const Word* wires);

 private:
  struct Entry {
    std::uint64_t key = 0;  // 0: empty
    int reach = 0;
  };

  std::uint64_t key_of(const Word* wires) const;
  std::size_t slot_of(std::uint64_t key) const;
  int compute(const Word* wires);

  /// A wire of the region, the same for all that are joined.
  int region_of(int q);

  int words_ = 0;
  std::vector<std::vector<int>> neighbours_;
  std::vector<Entry> known_;  // open addressing
  std::size_t count_ = 0;
  std::vector<int> distance_;  // scratch: from the nearest letter, -1 if not known yet
  std::vector<int> region_;    // towards region_of
  std::vector<int> rim_;       // the wires reached last
  std::vector<int> next_;
};

}  // namespace zelt::braidwerk::internal
