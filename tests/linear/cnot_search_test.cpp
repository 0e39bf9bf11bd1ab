// The search for short CNOT circuits: tables of windows, walks, and the whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <vector>

#include "support/gate_lists.h"
#include "support/tasks.h"
#include "zeltbraidwerk/linear/search/internal/block_rewriter.h"
#include "zeltbraidwerk/linear/search/internal/blocks.h"
#include "zeltbraidwerk/linear/search/internal/cnot_search.h"
#include "zeltbraidwerk/linear/search/internal/map_table.h"

namespace {

using support::at;
using support::implements;
using support::packed;
using support::steps;
using namespace zelt::braidwerk::internal;

/// One more CNOT in front: column c gains column t.
SmallMatrix after_cnot(SmallMatrix m, int n, int c, int t) {
  SmallMatrix first_column = 0;
  for (int r = 0; r < n; ++r) first_column |= SmallMatrix{1} << (n * r);
  return m ^ ((m >> t & first_column) << c);
}

/// A distance is right if a gate changes it by one at most, some gate leads down, and it is 0 for
/// the starts alone. Returns how many are.
int starts_of(const MapTable& table, int n, WindowGraph graph, const std::set<SmallMatrix>& maps) {
  int starts = 0;
  for (const SmallMatrix m : maps) {
    const int distance = table.distance(m);
    int least = distance;
    for (int c = 0; c < n; ++c) {
      for (int t = 0; t < n; ++t) {
        if (c == t || !(graph & pair_bit(c, t))) continue;
        const int other = table.distance(after_cnot(m, n, c, t));
        EXPECT_LE(std::abs(other - distance), 1);
        least = std::min(least, other);
      }
    }
    EXPECT_EQ(least, std::max(distance - 1, 0));
    starts += distance == 0 ? 1 : 0;
  }
  return starts;
}

TEST(CnotWindowTable, DistancesAreThoseOfShortestCircuits) {
  const auto line = static_cast<WindowGraph>(pair_bit(0, 1) | pair_bit(1, 2) | pair_bit(2, 3));
  const auto star = static_cast<WindowGraph>(pair_bit(0, 1) | pair_bit(0, 2) | pair_bit(0, 3));
  support::Rng rng(4);
  std::array<std::set<SmallMatrix>, 6> maps;  // all on four wires, some on five
  for (const int n : {4, 5}) {
    SmallMatrix m = MapTable::of(n, complete_graph(n), false).identity();
    for (int k = 0; k < 400'000; ++k) {
      const int c = static_cast<int>(rng() % at(n));
      m = after_cnot(m, n, c, (c + 1 + static_cast<int>(rng() % at(n - 1))) % n);
      if (n == 4 || k % 20 == 0 || k < 20) maps[at(n)].insert(m);
    }
  }
  ASSERT_EQ(maps[4].size(), 20160U);
  for (const bool permuted : {false, true}) {
    for (const WindowGraph graph : {complete_graph(4), line, star}) {
      EXPECT_EQ(starts_of(MapTable::of(4, graph, permuted), 4, graph, maps[4]), permuted ? 24 : 1);
    }
    const WindowGraph all = complete_graph(5);
    EXPECT_LE(starts_of(MapTable::of(5, all, permuted), 5, all, maps[5]), permuted ? 120 : 1);
  }
}

TEST(CnotWindowTable, DescendsToAShortestCircuit) {
  Rng rng(1, 0);
  for (const bool permuted : {false, true}) {
    for (int k = 2; k <= 5; ++k) {
      const MapTable& table = MapTable::of(k, complete_graph(k), permuted);
      for (int round = 0; round < 200; ++round) {
        SmallMatrix m = table.identity();
        for (int g = 0; g < 30; ++g) {
          const int c = rng.below(k);
          m = table.then(m, c, (c + 1 + rng.below(k - 1)) % k);
        }
        std::vector<Gate> block;
        const SmallMatrix left = table.descend(m, round % 2, rng, block);
        EXPECT_EQ(table.product(left, table.map_of(block)), m);
        EXPECT_LE(static_cast<int>(block.size()) - table.distance(m), round % 2);
        if (!permuted) {
          EXPECT_EQ(left, table.identity());
        }
      }
    }
  }
}

TEST(CnotWalk, KeepsTheMapAtEveryStep) {
  Rng rng(2, 0);
  support::Rng matrices(3);
  for (const bool permuted : {false, true}) {
    for (const int n : {2, 3, 4, 5, 7, 12}) {
      const BoolMatrix m = support::random_invertible(n, matrices);
      const Task task{.outputs = support::outputs(!permuted), .seed = 5};
      const BlockRewriter rewriter(std::min(n, 5), permuted);
      Walk<const BlockRewriter> walk(search_cnot(packed(m), task, steps(0)), rewriter);
      for (int step = 0; step < 300; ++step) {
        walk.step(0.5F, rng);
        ASSERT_TRUE(implements(walk.list(), m, !permuted)) << n << " step " << step;
      }
    }
  }
}

TEST(CnotSearch, FindsACircuitOfEverySize) {
  support::Rng matrices(7);
  for (int n = 0; n <= 128; n += n < 20 ? 1 : 9) {
    const BoolMatrix m = support::random_invertible(n, matrices);
    for (const bool exact : {false, true}) {
      for (const int window : {4, 5}) {
        const Task task{.outputs = support::outputs(exact), .seed = 1};
        const GateList found = search_cnot(packed(m), task, steps(n < 20 ? 3000 : 300), window);
        ASSERT_TRUE(implements(found, m, exact)) << n;
      }
    }
  }
}

TEST(CnotSearch, OutputsComeOutWhereItSays) {
  // Output 0 is input 1, output 1 is input 2, output 2 is input 0 plus input 1: one CNOT and a
  // cycle.
  const BoolMatrix m = support::matrix({"010", "001", "110"});
  const GateList free = search_cnot(packed(m), {.outputs = Outputs::anywhere}, steps(10));
  EXPECT_EQ(free.gates, (support::Gates{cnot(1, 0)}));
  EXPECT_TRUE(implements(free, m));
  const GateList exact = search_cnot(packed(m), {.outputs = Outputs::in_place}, steps(10));
  EXPECT_EQ(exact.count(), 5);
  EXPECT_TRUE(implements(exact, m, true));
}

TEST(CnotSearch, BlocksAreTakenApart) {
  // Three blocks, two of them equal, rows and columns mixed.
  support::Rng rng(17);
  const BoolMatrix six = support::random_invertible(6, rng);
  const BoolMatrix four = support::random_invertible(4, rng);
  BoolMatrix m(16, BoolRow(16));
  const auto put = [&m](const BoolMatrix& block, std::size_t from, std::size_t shift) {
    for (std::size_t r = 0; r < block.size(); ++r) {
      for (std::size_t c = 0; c < block.size(); ++c) {
        m[(5 * (from + r) + shift) % 16][(11 * (from + c)) % 16] = block[r][c];
      }
    }
  };
  put(six, 0, 3);
  put(four, 6, 3);
  put(six, 10, 3);
  EXPECT_EQ(blocks_of(packed(m)).size(), 3U);
  for (const bool exact : {false, true}) {
    const Task task{.outputs = support::outputs(exact)};
    EXPECT_TRUE(implements(search_cnot(packed(m), task, steps(20000)), m, exact));
  }
}

}  // namespace
