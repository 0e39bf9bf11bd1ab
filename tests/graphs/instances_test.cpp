#include <gtest/gtest.h>

#include "support/graphs.h"
#include "support/phases.h"
#include "zeltbraidwerk/graphs/steiner_gauss.h"
#include "zeltbraidwerk/phase/gray_synth.h"
#include "zeltbraidwerk/phase/gray_synth_on_graph.h"

// Ten thousand random instances a method, each circuit verified.

namespace {

using namespace support;
using structures::Gate;
using structures::Graph;
using structures::Table;

/// Mostly small, up to 64 qubits.
int draw_size(int trial, Rng& rng) {
  return 1 + static_cast<int>(rng() % (trial % 100 == 0 ? 64 : trial % 10 == 0 ? 24 : 9));
}

template <class F>
void run_instances(F&& check) {
  Rng rng(2024);
  for (int trial = 0; trial < 10000; ++trial) {
    SCOPED_TRACE(trial);
    check(draw_size(trial, rng), rng);
    if (testing::Test::HasFailure()) return;
  }
}

TEST(TenThousandInstances, SteinerGauss) {
  run_instances([](int n, Rng& rng) {
    std::vector<int> path;
    Graph device = random_device(n, static_cast<unsigned>(rng() % 40), rng, &path);
    const BoolMatrix m = random_invertible(n, rng);
    EXPECT_TRUE(reduces_on(device, synthesis::steiner_gauss_ham_path(table(m), device, path), m))
        << device << show(m) << " along " << show(path);
  });
}

TEST(TenThousandInstances, GraySynth) {
  run_instances([](int n, Rng& rng) {
    const PhasePolynomial poly = random_polynomial(n, static_cast<int>(rng() % 60), rng);
    Table map(n);
    const std::vector<Gate> circuit = gray_synth(poly, map);
    EXPECT_EQ(fault(poly, circuit, map), "") << show(circuit);
  });
}

TEST(TenThousandInstances, GraySynthOnGraph) {
  run_instances([](int n, Rng& rng) {
    Graph device = random_device(n, static_cast<unsigned>(rng() % 40), rng);
    const PhasePolynomial poly = random_polynomial(n, static_cast<int>(rng() % 60), rng);
    Table map;
    const std::vector<Gate> circuit = gray_synth_on_graph(poly, device, map);
    EXPECT_EQ(fault(poly, circuit, map), "") << device << show(circuit);
    EXPECT_TRUE(runs_on(device, circuit)) << device;
  });
}

}  // namespace
