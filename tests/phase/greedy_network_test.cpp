#include "zeltbraidwerk/phase/internal/greedy_network.h"

#include <gtest/gtest.h>

#include <atomic>

#include "support/phases.h"
#include "zeltbraidwerk/foundations/internal/engine_draw.h"

namespace {

using namespace support;
using namespace zelt::braidwerk::internal;

int cnots(const std::vector<PhaseStep>& steps) {
  return static_cast<int>(std::ranges::count_if(steps, &PhaseStep::is_cnot));
}

TEST(GreedyNetwork, ServesEveryTermOnceAndRepeats) {
  Rng rng(1);
  int plain = 0;
  int with_map = 0;
  for (int round = 0; round < 200; ++round) {
    const int n = 1 + round % 9 + (round % 50 == 0 ? 60 : 0);
    const PhasePolynomial poly = random_polynomial(n, static_cast<int>(rng() % 80), rng);
    const BitMatrix parities = pack_parities(poly, n);
    for (const double map_share : {0.0, 0.02}) {
      const GreedyNetworkOptions options{.decay = 0.4 + 0.1 * (round % 4), .map_share = map_share};
      const auto steps = *greedy_network(parities, options, SeededDraw(5, 0), {});
      std::vector<structures::Gate> circuit;
      append_gates(steps, angles(poly), circuit);
      structures::Table map(n);
      for (const PhaseStep& step : steps) {
        if (step.is_cnot()) map.cnot(step.control, step.target);
      }
      ASSERT_EQ(fault(poly, circuit, map), "") << n;
      EXPECT_EQ(cnots(*greedy_network(parities, options, SeededDraw(5, 0), {})), cnots(steps));
      (map_share > 0 ? with_map : plain) += cnots(steps);
    }
  }
  EXPECT_NE(plain, with_map) << "the map that is left counts for nothing";
  // All seven sums of three wires: one gate each for the four heavy ones.
  const PhasePolynomial all = polynomial({"100", "010", "001", "110", "101", "011", "111"});
  EXPECT_EQ(cnots(*greedy_network(pack_parities(all, 3), {}, SeededDraw(1, 0), {})), 4);

  const std::atomic<bool> stop = true;
  Control stopped;
  stopped.stop = &stop;
  EXPECT_FALSE(greedy_network(pack_parities(all, 3), {}, SeededDraw(1, 0), stopped).has_value());
}

}  // namespace
