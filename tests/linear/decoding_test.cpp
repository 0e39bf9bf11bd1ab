// Circuits of dense maps made wire by wire and by elimination of blocks, and the decoding that both
// need.
#include <gtest/gtest.h>

#include <bit>
#include <utility>
#include <vector>

#include "support/gate_lists.h"
#include "support/tasks.h"
#include "zeltbraidwerk/linear/search/internal/beams.h"
#include "zeltbraidwerk/linear/search/internal/decoded_elimination.h"
#include "zeltbraidwerk/linear/search/internal/exchanged_map.h"
#include "zeltbraidwerk/linear/search/internal/extension.h"
#include "zeltbraidwerk/linear/search/internal/light_sums.h"
#include "zeltbraidwerk/linear/search/internal/tuning.h"

namespace {

using support::at;
using support::packed;
using namespace zelt::braidwerk::internal;

/// The unit vectors, then random ones.
BitMatrix random_pool(int dimension, int count, Rng& rng) {
  BitMatrix pool(count, dimension);
  for (int k = 0; k < count; ++k) {
    for (int c = 0; c < dimension; ++c) pool.set(k, c, k < dimension ? c == k : rng.coin());
  }
  return pool;
}

BitMatrix sum_of(const BitMatrix& pool, const std::vector<int>& set) {
  BitMatrix sum(1, pool.cols());
  for (const int k : set) {
    for (int w = 0; w < pool.stride(); ++w) sum.row(0)[w] ^= pool.row(k)[w];
  }
  return sum;
}

/// The fewest vectors of the pool that sum up to each vector, by breadth-first search.
std::vector<int> distances(const BitMatrix& pool) {
  std::vector<int> distance(std::size_t{1} << pool.cols(), -1);
  std::vector<Word> reached{0};
  distance[0] = 0;
  for (std::size_t next = 0; next < reached.size(); ++next) {
    for (int k = 0; k < pool.rows(); ++k) {
      const Word to = reached[next] ^ pool.row(k)[0];
      if (distance[to] >= 0) continue;
      distance[to] = distance[reached[next]] + 1;
      reached.push_back(to);
    }
  }
  return distance;
}

TEST(LightSums, AreTheLightestOfSmallPools) {
  Rng rng(1, 0);
  for (const auto& [dimension, count] : {std::pair{1, 1}, {2, 3}, {9, 9}, {9, 14}, {12, 25}}) {
    const BitMatrix pool = random_pool(dimension, count, rng);
    const BitMatrix sums = random_pool(dimension, dimension + 6, rng);
    const std::vector<int> distance = distances(pool);
    LightSums light(pool, sums);
    for (int k = 0; k < 200; ++k) light.look(rng);
    for (int s = 0; s < sums.rows(); ++s) {
      EXPECT_EQ(light.weight(s), distance[sums.row(s)[0]]) << dimension << " of " << count;
      EXPECT_EQ(static_cast<int>(light.set(s).size()), light.weight(s));
      EXPECT_EQ(sum_of(pool, light.set(s)), sums.block(s, 0, 1, dimension));
    }
  }
}

TEST(LightSums, UseVectorsThatAreAddedAndLeaveSettledSums) {
  Rng rng(10, 0);
  const int dimension = 12;
  const BitMatrix pool = random_pool(dimension, 20, rng);
  const BitMatrix sums = random_pool(dimension, dimension + 8, rng);
  LightSums light(pool.block(0, 0, 13, dimension), sums);
  for (int k = 0; k < 5; ++k) light.look(rng);
  light.settle(15);
  const std::vector<int> settled = light.set(15);
  for (int k = 13; k < pool.rows(); ++k) light.add(pool.row(k));
  for (int k = 0; k < 200; ++k) light.look(rng);
  const std::vector<int> distance = distances(pool);
  for (int s = 0; s < sums.rows(); ++s) {
    EXPECT_EQ(sum_of(pool, light.set(s)), sums.block(s, 0, 1, dimension));
    if (s == 15) continue;
    EXPECT_EQ(light.weight(s), distance[sums.row(s)[0]]);
  }
  EXPECT_EQ(light.set(15), settled);
}

TEST(LightSums, FindPlantedSetsInOneWordAndInTwo) {
  Rng rng(2, 0);
  for (const int dimension : {63, 64, 65, 100, 128}) {
    const BitMatrix pool = random_pool(dimension, dimension + 60, rng);
    BitMatrix sums(8, dimension);
    for (int s = 0; s < sums.rows(); ++s) {
      const BitMatrix sum =
          sum_of(pool, {s, dimension - 1 - s, dimension + s, dimension + 20 + s, dimension + 50});
      std::copy_n(sum.row(0), sum.stride(), sums.row(s));
    }
    LightSums light(pool, sums);
    for (int k = 0; k < 400; ++k) light.look(rng);
    for (int s = 0; s < sums.rows(); ++s) {
      EXPECT_EQ(light.weight(s), 5) << dimension;
      EXPECT_EQ(sum_of(pool, light.set(s)), sums.block(s, 0, 1, dimension));
    }
  }
}

/// y0 = x1, y1 = x0 + x1 + x2, y2 = x2 + x3, y3 = x0 + x3.
TEST(ExchangedMap, ReceivesWhatTheRowSaysAndSendsWhereTheColumnSays) {
  BitMatrix m(4, 4);
  for (const auto& [r, c] :
       {std::pair{0, 1}, {1, 0}, {1, 1}, {1, 2}, {2, 2}, {2, 3}, {3, 0}, {3, 3}})
    m.set(r, c);
  Rng rng(3, 0);
  ExchangedMap map(m);
  map.exchange_lightest(0, rng);
  // y0 = x1 is 0: y1 = x0 + x2.
  ASSERT_EQ(map.wires(), 3);
  BitMatrix rest(3, 3);
  for (const auto& [r, c] : {std::pair{0, 0}, {0, 1}, {1, 1}, {1, 2}, {2, 0}, {2, 2}})
    rest.set(r, c);
  EXPECT_EQ(map.matrix(), rest);
  EXPECT_EQ(map.parities().weight(), 0);
  EXPECT_EQ(map.effects(), BitMatrix::identity(3).block(0, 0, 1, 3));
}

TEST(ExchangedMap, IsTheSmallerMapWithANewWire) {
  Rng rng(4, 0);
  support::Rng source(4);
  for (const int n : {2, 5, 9, 70}) {
    const BitMatrix m = packed(support::random_invertible(n, source));
    ExchangedMap map(m);
    const int wires = map.wires();
    while (map.wires() > wires / 2) map.exchange_lightest(3, rng);
    while (map.wires() < wires) {
      const int p = rng.below(map.exchanged());
      const int q = rng.below(map.exchanged());
      if (!map.can_return(p, q)) continue;
      const BitMatrix before = map.matrix();
      const BitMatrix u = map.parities();
      const BitMatrix v = map.effects();
      const int k = map.wires();
      BitMatrix expected(k + 1, k + 1);
      expected.set(k, k);
      for (int r = 0; r < k; ++r) {
        expected.set(k, r, u.get(p, r));
        expected.set(r, k, v.get(q, r));
        for (int c = 0; c < k; ++c) {
          expected.set(r, c, before.get(r, c) != (v.get(q, r) && u.get(p, c)));
        }
      }
      map.bring_back(p, q);
      ASSERT_EQ(map.matrix(), expected);
    }
    const WireFrame frame = map.frame();
    for (int r = 0; r < wires; ++r) {
      for (int c = 0; c < wires; ++c) {
        EXPECT_EQ(map.matrix().get(r, c), m.get(frame.output_on(map.input(r)), map.input(c)));
      }
    }
  }
}

using Make = GateList (*)(const BitMatrix&, std::uint64_t, int, Rng&, Meter&);
constexpr Make ways[] = {extend_wire_by_wire, eliminate_by_decoding};

TEST(ByDecoding, CircuitsAreOfAnyMap) {
  const Effort unlimited;
  Meter meter(unlimited);
  Rng rng(5, 0);
  support::Rng source(5);
  for (const int n : {1, 2, 7, 21, 26, 40, 51, 70, 103}) {
    const BoolMatrix m = support::random_invertible(n, source);
    const BoolMatrix sparse =
        support::map_of(support::random_gates(n, n > 1 ? n : 0, nullptr, false, source), n)
            .unpack();
    for (const BoolMatrix& map : {m, sparse, BitMatrix::identity(n).unpack()}) {
      for (const Make way : ways) {
        if (n > 72 && way == extend_wire_by_wire) continue;
        EXPECT_TRUE(support::implements(way(packed(map), 20'000, 4, rng, meter), map)) << n;
      }
    }
  }
}

TEST(ByDecoding, CircuitsAreShorterThanByABeam) {
  support::Rng source(6);
  for (const int n : {48, 64, 90}) {
    const BoolMatrix map = support::random_invertible(n, source);
    const BitMatrix m = packed(map);
    const Effort unlimited;
    Meter meter(unlimited);
    Rng rng(7, 0);
    const GateList beam = reduce_by_columns(m, 30, Facing::transpose, rng, meter);
    ASSERT_TRUE(support::implements(beam, map));
    const bool is_large = n > extension_tuning.most_wires;
    const GateList list =
        ways[is_large ? 1 : 0](m, is_large ? 1'000'000 : 2'000'000, 5, rng, meter);
    EXPECT_TRUE(support::implements(list, map));
    EXPECT_LT(list.count(), is_large ? beam.count() - beam.count() / 50 : beam.count()) << n;
  }
}

TEST(ByDecoding, CircuitsEndWithTheirEffort) {
  support::Rng source(8);
  const BitMatrix m = packed(support::random_invertible(55, source));
  for (const Make way : ways) {
    for (const std::uint64_t effort : {1, 1000, 30'000, 100'000}) {
      Meter meter(support::steps(effort));
      Rng rng(9, 0);
      EXPECT_TRUE(way(m, 1'000'000, 5, rng, meter).gates.empty());
      EXPECT_LT(meter.steps(), effort + 2000);
    }
  }
}

}  // namespace
