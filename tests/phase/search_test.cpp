#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <map>
#include <vector>

#include "support/oracles.h"
#include "zeltbraidwerk/phase/search/internal/parity_table.h"

namespace {

using namespace support;
using namespace zelt::braidwerk::internal;

/// Everything that up to `depth` CNOTs can do on four wires: maps, and sums shown on the way.
std::map<std::pair<SmallMatrix, SumSet>, int> all_circuits(int depth, WindowGraph graph) {
  constexpr SumSet units = 1 << 1 | 1 << 2 | 1 << 4 | 1 << 8;
  std::map<std::pair<SmallMatrix, SumSet>, int> found{{{0x8421, 0}, 0}};
  std::vector<std::pair<SmallMatrix, SumSet>> level{{0x8421, 0}};
  for (int d = 1; d <= depth; ++d) {
    std::vector<std::pair<SmallMatrix, SumSet>> next;
    for (const auto& [m, shown] : level) {
      for (int c = 0; c < 4; ++c) {
        for (int t = 0; t < 4; ++t) {
          if (c == t || (graph & pair_bit(c, t)) == 0) continue;
          const SmallMatrix image = m ^ (((m >> (4 * c)) & 15U) << (4 * t));
          const auto sums =
              static_cast<SumSet>((shown | 1U << ((image >> (4 * t)) & 15U)) & ~units);
          if (found.emplace(std::pair(image, sums), d).second) next.emplace_back(image, sums);
        }
      }
    }
    level = std::move(next);
  }
  return found;
}

TEST(ParityTable, DistancesArePlainSearch) {
  const WindowGraph path = pair_bit(2, 0) | pair_bit(0, 1) | pair_bit(1, 3);
  for (const WindowGraph graph : {complete_graph(4), path}) {
    const ParityTable& exact = ParityTable::of(graph, false);
    const ParityTable& permuted = ParityTable::of(graph, true);
    std::map<SmallMatrix, std::vector<std::pair<SumSet, int>>> by_map;
    for (const auto& [reached, d] : all_circuits(4, graph)) {
      by_map[reached.first].emplace_back(reached.second, d);
    }
    for (const auto& [m, ways] : by_map) {
      for (const auto& [needed, d] : ways) {
        int least = d;
        for (const auto& [shown, other] : ways) {
          if ((shown & needed) == needed) least = std::min(least, other);
        }
        ASSERT_EQ(exact.distance(m, needed), least) << m << " " << needed;
        // With the rows elsewhere it is the same to the one, and no more to the other.
        const SmallMatrix turned = (m >> 4 | m << 12) & 0xffff;
        ASSERT_EQ(permuted.distance(turned, needed), permuted.distance(m, needed));
        ASSERT_LE(permuted.distance(m, needed), least);
      }
    }
  }
}

TEST(ParityTable, DescentsShowWhatIsNeeded) {
  support::Rng draws(3);
  zelt::braidwerk::internal::Rng rng(3, 0);
  for (int k = 0; k < 2000; ++k) {
    const bool permutes = k % 2 == 1;
    const ParityTable& table = ParityTable::of(complete_graph(4), permutes);
    SmallMatrix m = 0x8421;
    for (int g = 0; g < 12; ++g) {
      const unsigned c = draws() % 4;
      const unsigned t = (c + 1 + draws() % 3) % 4;
      m ^= ((m >> (4 * c)) & 15U) << (4 * t);
    }
    const auto needed = static_cast<SumSet>(draws() & draws() & 0xfee8);
    std::vector<Gate> block;
    const bool detour = k % 4 >= 2;
    const SmallMatrix left = table.descend(m, needed, detour, rng, block);
    const int longer = static_cast<int>(block.size()) - table.distance(m, needed);
    ASSERT_TRUE(longer == 0 || (detour && longer == 1));
    unsigned shown = 0;
    SmallMatrix made = 0x8421;
    for (const Gate& gate : block) {
      made ^= ((made >> (4 * wire_of(gate.a))) & 15U) << (4 * wire_of(gate.b));
      shown |= 1U << ((made >> (4 * wire_of(gate.b))) & 15U);
    }
    ASSERT_EQ(shown & needed, needed);
    // Row r of m is the row of the block that `left` names there.
    for (int r = 0; r < 4; ++r) {
      const unsigned at_place = (left >> (4 * r)) & 15U;
      ASSERT_TRUE(std::has_single_bit(at_place));
      ASSERT_EQ((m >> (4 * r)) & 15U, (made >> (4 * std::countr_zero(at_place))) & 15U);
    }
    ASSERT_TRUE(permutes || left == 0x8421);
  }
}

}  // namespace
