#pragma once

#include <bit>
#include <cstdint>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bool_rows.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"

namespace zelt::braidwerk::internal {

/// What strings weigh on a connected device of up to 64 wires, by the wires they have letters on: a
/// string of weight w is brought down to one letter by w - 1 gates on edges. These are one per edge
/// of a tree that joins the letters, and another one for each wire between, which gets a letter
/// first. So a string whose letters are connected weighs as much as it has letters.
class SupportWeights {
 public:
  static constexpr int most_wires = 64;

  explicit SupportWeights(const BitGraph& device);

  int wires() const { return static_cast<int>(near_.size()); }
  const std::vector<std::pair<int, int>>& edges() const { return edges_; }
  Word near(int wire) const { return near_[static_cast<std::size_t>(wire)]; }
  /// The wires that are joined to one of a set.
  Word near_any(Word set) const {
    Word result = 0;
    for (; set != 0; set &= set - 1) result |= near(std::countr_zero(set));
    return result;
  }
  bool is_connected(Word set) const {
    Word met = set & -set;
    for (Word next = met; next != 0; met |= next) next = near_any(next) & set & ~met;
    return met == set;
  }

  /// Of a string with a letter at least. Changes a cache: one object per thread.
  int operator()(Word support) {
    if (!exact_.empty()) return exact_[support];
    Entry& entry = cache_[(support * 0x9e3779b97f4a7c15U) >> (64 - cache_bits)];
    if (entry.support != support) entry = {support, by_nearest(support)};
    return entry.weight;
  }

 private:
  struct Entry {
    Word support = 0;
    int weight = 0;
  };
  static constexpr int most_exact = 16;
  static constexpr int cache_bits = 16;

  void fill_exact();
  int by_nearest(Word support) const;

  std::vector<Word> near_;
  std::vector<std::pair<int, int>> edges_;
  std::vector<std::uint8_t> exact_;  ///< by support
  std::vector<Entry> cache_;
};

}  // namespace zelt::braidwerk::internal
