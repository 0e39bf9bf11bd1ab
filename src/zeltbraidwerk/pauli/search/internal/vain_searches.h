#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/pauli/search/internal/tuning.h"

namespace zelt::braidwerk::internal {

/// Searches that were made to their end and found nothing, with how many nodes each looked at. A
/// table that grows to a fixed size, in which the latest takes the place of another one. Keys are
/// hashes: of 2^48 look-ups one is wrong, and a search is left out that would have found something.
class VainSearches {
 public:
  /// Of a search for at most `gates` gates from these operators, with rotations left of this hash.
  static std::uint64_t key(std::uint64_t operators, std::uint64_t rotations, int gates) {
    std::uint64_t key = operators * 0x9e3779b97f4a7c15U ^ rotations;
    key += static_cast<std::uint64_t>(gates) * 0xd1342543de82ef95U;
    key = (key ^ key >> 32) * 0xbf58476d1ce4e5b9U;
    return key ^ key >> 29;
  }

  /// The nodes; -1 where nothing is known.
  int find(std::uint64_t key) const {
    const std::uint64_t slot = slots_[at(key)];
    return ((slot ^ key) & ~nodes_mask) == 0 ? static_cast<int>(slot & nodes_mask) : -1;
  }
  void add(std::uint64_t key, int nodes) {
    if (nodes > static_cast<int>(nodes_mask)) return;
    if (++added_ > slots_.size() && bits_ < vain_tuning.most_bits) grow();
    slots_[at(key)] = (key & ~nodes_mask) | static_cast<std::uint64_t>(nodes);
  }

 private:
  static constexpr std::uint64_t nodes_mask = 0xfff;

  std::size_t at(std::uint64_t key) const { return static_cast<std::size_t>(key >> (64 - bits_)); }

  void grow() {
    bits_ += vain_tuning.growth_bits;
    std::vector<std::uint64_t> old(std::size_t{1} << bits_);
    old.swap(slots_);
    for (const std::uint64_t slot : old) slots_[at(slot)] = slot;
  }

  int bits_ = vain_tuning.least_bits;
  std::size_t added_ = 0;
  std::vector<std::uint64_t> slots_ = std::vector<std::uint64_t>(std::size_t{1} << bits_);
};

}  // namespace zelt::braidwerk::internal
