// Searches for short CNOT circuits on the edges of a device.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/gate_lists.h"
#include "support/graphs.h"
#include "support/oracles.h"
#include "support/tasks.h"
#include "zeltbraidwerk/linear/search/internal/device_search.h"
#include "zeltbraidwerk/linear/search/internal/light_line.h"

namespace {

using support::at;
using namespace zelt::braidwerk::internal;

GateList searched(const BoolMatrix& m, const structures::Graph& device, std::uint64_t steps,
                  int reach = 0) {
  const BitGraph graph(device);
  const Task task{.outputs = reach == any_reach ? Outputs::anywhere : Outputs::within_reach,
                  .reach = reach,
                  .device = &graph,
                  .seed = 1};
  return search_cnot_on_device(support::packed(m), task, support::steps(steps));
}

/// What is wrong with a circuit; empty when nothing is.
std::string fault(const GateList& list, const BoolMatrix& m, const structures::Graph& device,
                  int reach) {
  structures::Graph paths = device;
  paths.set_shortest_paths();
  for (const Gate& gate : list.gates) {
    if (!device.are_neighbors(wire_of(gate.a), wire_of(gate.b))) return "not on an edge";
  }
  for (int w = 0; w < device.n && reach < any_reach; ++w) {
    const auto& path = paths.shortest_paths[at(list.frame.output_on(w))][at(w)];
    if (std::ssize(path) > reach + 1) return "too far from its place";
  }
  return support::implements(list, m) ? "" : "another map";
}

TEST(DeviceSearch, EveryDevice) {
  support::Rng rng(1);
  std::vector<structures::Graph> devices{support::line(2),    support::line(7), support::grid(3, 3),
                                         support::grid(4, 3), support::star(6), support::line(70)};
  for (const int n : {1, 2, 3, 4, 5, 6, 8, 11, 19, 40}) {
    devices.push_back(support::random_device(n, 0, rng));
    devices.push_back(support::random_device(n, 10, rng));
  }
  for (const structures::Graph& device : devices) {
    const BoolMatrix m = support::random_invertible(device.n, rng);
    for (const int reach : {0, 1, any_reach}) {
      const GateList list = searched(m, device, 3000, reach);
      EXPECT_EQ(fault(list, m, device, reach), "") << device.n << " reach " << reach;
    }
  }
}

TEST(DeviceSearch, DirectionsAndShortest) {
  // The end of a line gains its beginning: through the middle and back.
  const BoolMatrix m = support::matrix({"100", "010", "101"});
  const GateList list = searched(m, support::line(3), 2000);
  EXPECT_EQ(list.count(), 4);
  EXPECT_EQ(fault(list, m, support::line(3), 0), "");
  // A swap of the ends of an edge, where outputs may move and where not.
  const BoolMatrix swap = support::matrix({"010", "100", "001"});
  EXPECT_EQ(searched(swap, support::line(3), 2000).count(), 3);
  EXPECT_EQ(searched(swap, support::line(3), 2000, 1).count(), 0);
}

TEST(DeviceSearch, EndsOnWhatHasNoCircuit) {
  for (const int n : {0, 1}) {
    EXPECT_EQ(searched(support::identity(n), structures::Graph(n), 100).count(), 0);
  }
  searched(BoolMatrix(5, BoolRow(5)), support::line(5), 1000);
  searched(BoolMatrix(6, BoolRow(6, true)), support::grid(3, 2), 1000, any_reach);
  support::Rng rng(3);
  searched(support::random_invertible(6, rng), structures::Graph(6), 1000);
}

TEST(LightLine, IsClearedInTheGatesThatItTells) {
  support::Rng rng(4);
  int lighter = 0;
  for (int run = 0; run < 60; ++run) {
    const int n = 2 + run % 15;
    const BitGraph device(run % 3 == 0 ? support::line(n) : support::random_device(n, 10, rng));
    std::vector<WireSet<1>> near(at(n));
    std::vector<WireSet<1>> lines(at(n));
    WireSet<1> left;
    for (int v = 0; v < n; ++v) {
      left.insert(v);
      device.for_each_neighbour(v, [&](int w) { near[at(v)].insert(w); });
      lines[at(v)].words[0] = rng();
    }
    const int v = run % n;
    const std::uint64_t seed = rng();
    LineTree<1> tree;
    const auto found = LightLine<1>().find(lines.data(), v, near, left, seed);
    EXPECT_LE(found.gates, tree.gates(lines[at(v)] & left, v, near, left, seed));
    for (std::size_t k = found.sum.count; k-- > 0;) {
      EXPECT_TRUE(device.joined(found.sum.to[k], found.sum.from[k]));
      lines[found.sum.to[k]] ^= lines[found.sum.from[k]];
    }
    WireSet<1> missed = lines[at(v)] & left;
    missed.erase(v);
    WireSet<1> joined;
    joined.insert(v);
    int gates = found.sum.count;
    for (const auto& [parent, child] : tree.grow(lines[at(v)] & left, v, near, left, seed)) {
      EXPECT_TRUE(joined.contains(parent) && device.joined(parent, child));
      gates += lines[at(v)].contains(child) ? 1 : 2;
      joined.insert(child);
      missed.erase(child);
    }
    if (gates > found.sum.count && !lines[at(v)].contains(v)) ++gates;
    EXPECT_EQ(gates, found.gates) << run;
    EXPECT_TRUE(missed.empty());
    lighter += found.sum.count > 0;
  }
  EXPECT_GT(lighter, 20);
}

}  // namespace
