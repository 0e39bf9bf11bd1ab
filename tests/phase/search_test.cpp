#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <map>
#include <vector>

#include "support/oracles.h"
#include "zeltbraidwerk/phase/search/internal/growth.h"
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

/// Parities that are left, in what the wires hold, bit by bit.
struct Left {
  std::vector<unsigned> parities;
  void play(unsigned control, unsigned target) {
    for (unsigned& parity : parities) parity ^= ((parity >> target) & 1U) << control;
    std::erase_if(parities, [](unsigned parity) { return std::has_single_bit(parity); });
  }
  double cost(double decay) const {
    double sum = 0;
    for (const unsigned parity : parities) {
      sum += (1 - std::pow(decay, std::popcount(parity) - 1)) / (1 - decay);
    }
    return sum;
  }
};

TEST(Growth, CountsHeavyParitiesMoreTheFewerAreLeft) {
  constexpr int n = 9;
  constexpr int most = 64;
  Left left;
  BitMatrix parities(n, most);
  for (int p = 0; p < most; ++p) {
    left.parities.push_back(static_cast<unsigned>(7 * p + 3 + (p % 2 == 0 ? 0 : 1)));
    while (std::has_single_bit(left.parities.back())) left.parities.back() ^= 36;
    for (int q = 0; q < n; ++q) {
      if ((left.parities.back() >> q) & 1U) parities.set(q, p, true);
    }
  }
  Growth growth(n, most, {.decay = 0.3, .decay_rise = 0.1});
  GrowthState state = growth.start(parities);
  zelt::braidwerk::internal::Rng rng(1, 0);
  double lowest_before = 1e300;
  for (const auto& [until, decay] : {std::pair(64, 0.3), {32, 0.4}, {16, 0.5}, {2, 0.8}}) {
    for (int gates = 0; state.left() > until; ++gates) {
      ASSERT_LT(gates, 1000);
      GrowthMove best{};
      double least = 1e300;
      growth.children(state, rng, [&](double score, const GrowthMove& move) {
        score += 0.5 * static_cast<double>(rng.unit());
        if (score < least) best = move;
        least = std::min(least, score);
      });
      growth.make(state, best);
      left.play(best.control, best.target);
      ASSERT_EQ(state.left(), static_cast<int>(left.parities.size()));
    }
    ASSERT_EQ(state.left(), until);
    growth.begin_level(state);
    growth.begin_level(growth.start(parities));  // it never falls
    double offset = 0;                           // what was there before is no cost
    double lowest = 1e300;
    growth.children(state, rng, [&](double score, const GrowthMove& move) {
      Left child = left;
      child.play(move.control, move.target);
      if (lowest == 1e300) offset = score - child.cost(decay);
      EXPECT_NEAR(score - offset, child.cost(decay), 1e-3) << until;
      lowest = std::min(lowest, score);
    });
    EXPECT_LT(lowest, lowest_before);  // so that a beam goes on
    lowest_before = lowest;
  }
}

}  // namespace
