#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zelt::braidwerk::internal {

/// Searches that were made to their end and found nothing, with how many nodes they looked at: a
/// table of fixed size, in which the latest takes the place of another one.
class VainSearches {
 public:
  /// Of a search from a state of these operators and rotations left, by at most `budget` gates.
  static std::uint64_t key(std::uint64_t operators, std::uint64_t rotations, int budget) {
    std::uint64_t key = operators * 0x9e3779b97f4a7c15U ^ rotations;
    key += static_cast<std::uint64_t>(budget) * 0xd1342543de82ef95U;
    key = (key ^ key >> 32) * 0xbf58476d1ce4e5b9U;
    return key ^ key >> 29;
  }
  /// -1 where nothing is known.
  int find(std::uint64_t key) const {
    const std::uint64_t slot = slots_[key >> (64 - bits)];
    return ((slot ^ key) & ~count_mask) == 0 ? static_cast<int>(slot & count_mask) : -1;
  }
  void add(std::uint64_t key, int nodes) {
    if (nodes > static_cast<int>(count_mask)) return;
    slots_[key >> (64 - bits)] = (key & ~count_mask) | static_cast<std::uint64_t>(nodes);
  }

 private:
  static constexpr int bits = 16;
  static constexpr std::uint64_t count_mask = 0xfff;
  std::vector<std::uint64_t> slots_ = std::vector<std::uint64_t>(std::size_t{1} << bits);
};

}  // namespace zelt::braidwerk::internal
