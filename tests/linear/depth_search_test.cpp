// CNOT circuits of few layers, found by search; gates put into layers as far as they commute.
#include <gtest/gtest.h>

#include <atomic>

#include "support/gate_lists.h"
#include "support/oracles.h"
#include "support/tasks.h"
#include "zeltbraidwerk/linear/search/internal/block_search.h"
#include "zeltbraidwerk/linear/search/internal/depth_schedule.h"
#include "zeltbraidwerk/linear/search/internal/depth_search.h"
#include "zeltbraidwerk/linear/search/internal/depth_series.h"
#include "zeltbraidwerk/linear/search/internal/light_halves.h"
#include "zeltbraidwerk/linear/search/internal/map_circuits.h"

namespace {

using support::implements;
using support::packed;
using support::steps;
using namespace zelt::braidwerk::internal;

TEST(Scheduler, KeepsTheMapAndNeverDeepens) {
  support::Rng rng(1);
  for (const int n : {0, 1, 2, 3, 5, 17, 64}) {
    for (const int count : {0, 1, 7, 40, 600}) {
      std::vector<Gate> gates = support::random_gates(n, n > 1 ? count : 0, nullptr, false, rng);
      const BitMatrix map = support::map_of(gates, n);
      const int before = depth_of(gates, n);
      Scheduler scheduler(n);
      const int depth = scheduler.tighten(gates);
      EXPECT_LE(depth, before);
      const int settled = scheduler.settle(gates);
      EXPECT_LE(settled, depth);
      EXPECT_LE(depth_of(gates, n), settled);
      EXPECT_LE(scheduler.bound(), static_cast<int>(gates.size()));
      EXPECT_EQ(support::map_of(gates, n), map) << n << " wires, " << count;
    }
  }
}

TEST(Scheduler, FillsLayersWithGatesThatCommute) {
  // In the order given each gate waits for the one before. The first three share their control and
  // the last three their target, so the two ends can be interleaved.
  std::vector<Gate> gates{cnot(0, 1), cnot(0, 2), cnot(0, 3), cnot(3, 4), cnot(2, 4), cnot(1, 4)};
  ASSERT_EQ(depth_of(gates, 5), 6);
  Scheduler scheduler(5);
  EXPECT_EQ(scheduler.settle(gates), 4);
  EXPECT_EQ(scheduler.bound(), 6);
  // A control after a target does not commute with it.
  gates = {cnot(0, 1), cnot(1, 2), cnot(2, 3)};
  EXPECT_EQ(scheduler.settle(gates), 3);
}

TEST(LayerSeries, EveryRunGivesACircuit) {
  support::Rng rng(2);
  for (const int n : {2, 3, 8, 20, 50, 70}) {
    const BoolMatrix m = support::random_invertible(n, rng);
    const BitMatrix words = packed(m);
    LayerSeries series(words);
    Rng draws(1, 0);
    Effort effort;
    Meter meter(effort);
    int last = 0;
    for (int k = 0; k < 6; ++k) {
      if (k == 4) series.begin_anew();
      const bool better = series.run(draws, meter);
      const GateList& list = series.circuit();
      const int depth = depth_of(list.gates, n);
      EXPECT_TRUE(better || (k != 0 && k != 4));
      EXPECT_TRUE(implements(list, m)) << n;
      last = depth;
    }
    EXPECT_LE(last, 2 * n) << n;
  }
}

TEST(LightHalves, HasLightQuotientsOfItsBlocks) {
  support::Rng rng(6);
  for (const int n : {2, 3, 9, 64, 131}) {
    const BitMatrix m = packed(support::random_invertible(n, rng));
    Rng draws(1, 0);
    Meter meter((Effort()));
    const Halves halves = light_halves(m, 1000, draws, meter);
    BitMatrix ordered(n, n);
    for (int r = 0; r < n; ++r) {
      for (int c = 0; c < n; ++c) {
        ordered.set(r, c,
                    m.get(halves.rows[static_cast<std::size_t>(r)],
                          halves.cols[static_cast<std::size_t>(c)]));
      }
    }
    const int h = n / 2;
    const int r = n - h;
    const BitMatrix first = ordered.block(0, 0, h, h);
    EXPECT_TRUE(is_invertible(first)) << n;
    EXPECT_EQ(product(halves.below, first), ordered.block(h, 0, r, h)) << n;
    EXPECT_EQ(product(first, halves.beside), ordered.block(0, h, h, r)) << n;
    EXPECT_TRUE(is_invertible(ordered)) << n;  // each line once
    // Of random lines it is half of the places.
    if (n == 64) {
      EXPECT_LT(halves.below.weight() + halves.beside.weight(), 900);
    }
    EXPECT_EQ(meter.steps(), 1000U);
  }
}

TEST(BlockSearch, ClearsBlocksOfAnyShape) {
  support::Rng rng(3);
  // Halves left to an elimination; odd numbers of wires have blocks that are not square, and from
  // 130 on lines of two words.
  const HalfSearch by_elimination = [](const BitMatrix& half) {
    return by_pairs(half, Facing::plain);
  };
  for (const int n : {2, 3, 7, 16, 33, 131}) {
    const BoolMatrix m = support::random_invertible(n, rng);
    Rng draws(1, 0);
    Meter meter((Effort()));
    const auto list = search_by_blocks(packed(m), n < 64 ? 600 : 1, by_elimination, draws, meter);
    ASSERT_TRUE(list.has_value());
    EXPECT_TRUE(implements(*list, m)) << n;
  }
  // Spent effort leaves nothing.
  Rng draws(1, 0);
  Meter spent(steps(0));
  const BoolMatrix m = support::random_invertible(9, rng);
  EXPECT_FALSE(search_by_blocks(packed(m), 3, by_elimination, draws, spent).has_value());
}

TEST(BlockSearch, MakesDenseMapsShallow) {
  support::Rng rng(4);
  const BoolMatrix m = support::random_invertible(64, rng);
  const Task task{.objective = Objective::depth, .outputs = Outputs::anywhere};
  const auto front = search_shallow_cnot(packed(m), task, steps(60'000));
  EXPECT_TRUE(implements(front[0].list, m));
  EXPECT_LE(front[0].depth, 44);  // 57 without searched steps, 46 without light halves
}

TEST(DepthSearch, KeepsDirections) {
  // Output 0 is x0, output 1 is x0 + x1 + x2, output 2 is x0 + x2: one circuit alone has two gates.
  const BoolMatrix m = support::matrix({"100", "111", "101"});
  Task task;
  task.outputs = Outputs::in_place;
  const auto front = search_shallow_cnot(packed(m), task, steps(1000));
  ASSERT_EQ(front.size(), 1U);
  EXPECT_EQ(front[0].list.gates, (std::vector{cnot(0, 2), cnot(2, 1)}));
  EXPECT_EQ(front[0].depth, 2);
  // The outputs of that circuit named anew: the free search leaves them where they are.
  const BoolMatrix turned = support::matrix({"111", "101", "100"});
  task.outputs = Outputs::anywhere;
  const auto free = search_shallow_cnot(packed(turned), task, steps(1000));
  EXPECT_EQ(free[0].depth, 2);
  EXPECT_TRUE(implements(free[0].list, turned));
}

TEST(DepthSearch, KeepsDirectionsWhereItIsStoppedAtOnce) {
  const std::atomic<bool> stop = true;
  Effort effort;
  effort.control.stop = &stop;
  const BoolMatrix m = support::matrix({"010", "001", "110"});  // not its own inverse
  for (const bool exact : {false, true}) {
    const Task task{.outputs = support::outputs(exact)};
    EXPECT_TRUE(implements(search_shallow_cnot(packed(m), task, effort)[0].list, m, exact));
  }
}

TEST(DepthSearch, EndsOnWhatHasNoCircuit) {
  for (const auto& rows : {std::vector<std::string_view>{"00", "00"}, {"110", "110", "001"}}) {
    const auto front = search_shallow_cnot(packed(support::matrix(rows)),
                                           {.outputs = Outputs::anywhere}, steps(100));
    EXPECT_FALSE(front.empty());
  }
}

}  // namespace
