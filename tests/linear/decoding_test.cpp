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
#include "zeltbraidwerk/linear/search/internal/gate_order.h"
#include "zeltbraidwerk/linear/search/internal/light_sums.h"
#include "zeltbraidwerk/linear/search/internal/passing_vectors.h"
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

TEST(LightSums, DoWithoutVectorsThatAreRemovedAndSetsThatAreRefused) {
  Rng rng(10, 0);
  const int dimension = 12;
  const BitMatrix pool = random_pool(dimension, 40, rng);
  const BitMatrix sums = random_pool(dimension, 20, rng).block(12, 0, 8, dimension);
  LightSums light(pool, sums);
  for (int k = 0; k < 50; ++k) light.look(rng);
  for (int vector = 20; vector < 40; ++vector) light.remove(vector, rng);
  for (int s = 0; s < sums.rows(); ++s) light.forget(s);
  const BitMatrix rest = pool.block(0, 0, 20, dimension);
  const std::vector<int> distance = distances(rest);
  const auto has_15 = [](const std::vector<int>& set) { return std::ranges::count(set, 15) > 0; };
  const auto check = [&] {
    for (int s = 0; s < sums.rows(); ++s) {
      if (!light.has_set(s)) continue;
      EXPECT_GE(light.weight(s), distance[sums.row(s)[0]]);
      EXPECT_EQ(sum_of(rest, light.set(s)), sums.block(s, 0, 1, dimension));
    }
  };
  for (int k = 0; k < 50; ++k) {
    light.look(rng, [&](const std::vector<int>& set) { return !has_15(set); });
  }
  check();
  for (int s = 0; s < sums.rows(); ++s) EXPECT_FALSE(has_15(light.set(s)));
  for (int k = 0; k < 400; ++k) light.look(rng);
  check();
  int refused = 0;
  for (int s = 0; s < sums.rows(); ++s) {
    EXPECT_EQ(light.weight(s), distance[sums.row(s)[0]]);
    refused += has_15(light.set(s)) ? 1 : 0;
  }
  EXPECT_GT(refused, 0);
}

TEST(GateOrder, HasRoomForGatesAsLongAsNoneIsBeforeItself) {
  GateOrder order;
  const int a = order.put(cnot(0, 1), {});
  const int b = order.put(cnot(1, 2), {{a}, {}});
  const int c = order.put(cnot(3, 4), {});
  EXPECT_TRUE(order.have_room({{{b}, {c}}, {{a}, {b}}}));
  EXPECT_FALSE(order.have_room({{{b}, {a}}}));
  EXPECT_TRUE(order.have_room({{{b}, {c}}}));
  EXPECT_TRUE(order.have_room({{{c}, {a}}}));
  EXPECT_FALSE(order.have_room({{{b}, {c}}, {{c}, {a}}}));  // each alone
  const int d = order.put(cnot(5, 6), {{b}, {c}});
  EXPECT_TRUE(order.is_before(a, c));
  EXPECT_FALSE(order.is_before(c, d));
  EXPECT_FALSE(order.have_room({{{c}, {a}}}));
  EXPECT_EQ(order.line(), (std::vector<Gate>{cnot(0, 1), cnot(1, 2), cnot(5, 6), cnot(3, 4)}));
}

/// Wire 0 receives from 1 and from 2 in either order: so 3 can receive x0 + x2, which no circuit in
/// the order of its gates passes by. Then x0 + x1 cannot be had any more.
TEST(PassingVectors, AreThoseOfAnyOrderUntilOneIsSettled) {
  const BitMatrix units = BitMatrix::identity(3);
  Rng rng(11, 0);
  PassingVectors passing(4, 3);
  for (int wire = 0; wire < 3; ++wire) passing.hold(end_of(wire, label_z), units.row(wire));
  passing.play(cnot(1, 0));
  passing.play(cnot(2, 0));
  passing.pass_all_on(rng);
  std::vector<int> number(8, -1);
  for (int k = 0; k < passing.count(); ++k) number[passing.vector(k)[0]] = k;
  ASSERT_EQ(passing.count(), 6);  // x0, x1, x2, and all sums with x0
  EXPECT_FALSE(passing.can_be_had({number[0b011], number[0b101]}));
  ASSERT_TRUE(passing.can_be_had({number[0b101], number[0b001]}));
  passing.receive(end_of(3, label_x), {number[0b101]});
  EXPECT_EQ(passing.lost(), std::vector{number[0b011]});
  EXPECT_EQ(passing.circuit(), (std::vector<Gate>{cnot(2, 0), cnot(0, 3), cnot(1, 0)}));
}

/// What Pauli letters become by a gate, where all of them hold something.
TEST(PassingVectors, GatesAddBothEndsToTheOtherLabels) {
  BitMatrix letters(6, 4);
  PassingVectors passing(2, 4);
  int row = 0;
  for (int wire = 0; wire < 2; ++wire) {
    for (const int label : {label_x, label_z, label_y}) {
      letters.set(row, 2 * wire, label != label_z);
      letters.set(row, 2 * wire + 1, label != label_x);
      passing.hold(end_of(wire, label), letters.row(row++));
    }
  }
  Rng rng(12, 0);
  passing.play({end_of(0, label_y), end_of(1, label_x)});
  passing.pass_all_on(rng);
  std::vector<Word> added;
  for (int k = 6; k < passing.count(); ++k) added.push_back(passing.vector(k)[0]);
  // X0, Z0, Z1 and Y1, each times Y0 X1.
  EXPECT_EQ(added, (std::vector<Word>{0b0110, 0b0101, 0b1111, 0b1011}));
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
