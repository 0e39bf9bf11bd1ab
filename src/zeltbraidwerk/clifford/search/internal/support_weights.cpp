#include "zeltbraidwerk/clifford/search/internal/support_weights.h"

#include <algorithm>
#include <bit>
#include <cstddef>

namespace zelt::braidwerk::internal {

SupportWeights::SupportWeights(const BitGraph& device)
    : near_(static_cast<std::size_t>(device.size())) {
  for (int a = 0; a < device.size(); ++a) {
    device.for_each_neighbour(a, [&](int b) {
      near_[static_cast<std::size_t>(a)] |= Word{1} << b;
      if (a < b) edges_.emplace_back(a, b);
    });
  }
  if (wires() <= most_exact) {
    fill_exact();
  } else {
    cache_.resize(std::size_t{1} << cache_bits);
  }
}

/// The fewest wires of a connected set around each set of wires: its own where it is connected,
/// else the fewest around the sets with one wire more.
void SupportWeights::fill_exact() {
  const std::size_t sets = std::size_t{1} << near_.size();
  constexpr std::uint8_t unknown = 255;
  std::vector<std::uint8_t> around(sets, unknown);
  around[0] = 0;
  for (std::size_t set = 1; set < sets; ++set) {
    for (Word rest = set; rest != 0 && around[set] == unknown; rest &= rest - 1) {
      const std::size_t others = set & ~(rest & -rest);
      const bool joined =
          others == 0 || (near_[static_cast<std::size_t>(std::countr_zero(rest))] & others) != 0;
      if (joined && around[others] == std::popcount(others)) {
        around[set] = static_cast<std::uint8_t>(std::popcount(set));
      }
    }
  }
  exact_.resize(sets);
  for (std::size_t set = sets; set-- > 0;) {
    for (Word rest = (sets - 1) & ~set; rest != 0 && around[set] > std::popcount(set);
         rest &= rest - 1) {
      around[set] = std::min(around[set], around[set | (rest & -rest)]);
    }
    exact_[set] = static_cast<std::uint8_t>(2 * around[set] - std::popcount(set));
  }
}

/// A tree that takes in the nearest letter again and again.
int SupportWeights::by_nearest(Word support) const {
  Word tree = support & -support;
  while ((support & ~tree) != 0) {
    std::vector<Word> layers{tree};
    Word met = tree;
    while ((layers.back() & support & ~tree) == 0) {
      const Word next = near_any(layers.back()) & ~met;
      if (next == 0) return 2 * wires();  // not connected
      met |= next;
      layers.push_back(next);
    }
    Word at = layers.back() & support;
    at &= -at;
    for (std::size_t k = layers.size() - 1; k > 0; --k) {
      tree |= at;
      const Word before = near_[static_cast<std::size_t>(std::countr_zero(at))] & layers[k - 1];
      at = before & -before;
    }
  }
  return 2 * std::popcount(tree) - std::popcount(support);
}

}  // namespace zelt::braidwerk::internal
