// Searches for short CNOT circuits on the edges of a device.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <queue>
#include <string>
#include <vector>

#include "support/graphs.h"
#include "support/oracles.h"
#include "support/tasks.h"
#include "zeltbraidwerk/linear/search/internal/device_search.h"
#include "zeltbraidwerk/linear/search/internal/map_table.h"

namespace {

using support::at;
using namespace zelt::braidwerk::internal;

GateList searched(const BoolMatrix& m, const structures::Graph& device, std::uint64_t steps,
                  int reach = 0, std::uint64_t seed = 1, bool by_depth = false) {
  const BitGraph graph(device);
  const Task task{.objective = support::objective(by_depth),
                  .outputs = reach == any_reach ? Outputs::anywhere : Outputs::within_reach,
                  .reach = reach,
                  .device = &graph,
                  .seed = seed};
  Effort effort;
  effort.steps = steps;
  const int n = device.n;
  return search_cnot_on_device(BitMatrix::pack(m, n, n), task, effort);
}

std::vector<std::tuple<int, int>> cnots(const GateList& list) {
  std::vector<std::tuple<int, int>> gates;
  for (const Gate& gate : list.gates) gates.emplace_back(wire_of(gate.a), wire_of(gate.b));
  return gates;
}

int distance(const structures::Graph& device, int from, int to) {
  std::vector<int> far(at(device.n), -1);
  std::queue<int> queue({from});
  far[at(from)] = 0;
  for (; !queue.empty(); queue.pop()) {
    for (int v = 0; v < device.n; ++v) {
      if (far[at(v)] >= 0 || !device.are_neighbors(queue.front(), v)) continue;
      far[at(v)] = far[at(queue.front())] + 1;
      queue.push(v);
    }
  }
  return far[at(to)];
}

/// What is wrong with a circuit; empty when nothing is.
std::string fault(const GateList& list, const BoolMatrix& m, const structures::Graph& device,
                  int reach) {
  for (const Gate& gate : list.gates) {
    if (label_of(gate.a) != label_z || label_of(gate.b) != label_x) return "no CNOT";
    if (!device.are_neighbors(wire_of(gate.a), wire_of(gate.b))) return "not on an edge";
  }
  std::vector<int> wire(m.size());
  for (std::size_t w = 0; w < m.size(); ++w) {
    const int output = list.frame.output_on(static_cast<int>(w));
    wire[at(output)] = static_cast<int>(w);
    if (reach < any_reach && distance(device, output, static_cast<int>(w)) > reach) {
      return "too far from its place";
    }
  }
  const structures::CnotCircuit circuit(device.n, cnots(list));
  return support::implements_up_to(circuit, wire, m) ? "" : "another map";
}

structures::Graph star(int n) {
  structures::Graph g(n);
  for (int v = 1; v < n; ++v) g.add_edge(0, v);
  return g;
}

TEST(DeviceSearch, EveryDevice) {
  support::Rng rng(1);
  std::vector<structures::Graph> devices{support::line(2),    support::line(7), support::grid(3, 3),
                                         support::grid(4, 3), star(6),          support::line(70)};
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
  EXPECT_EQ(list.count(), 4) << support::show(cnots(list));
  EXPECT_EQ(fault(list, m, support::line(3), 0), "");
  // A swap of the ends of an edge, where outputs may move and where not.
  const BoolMatrix swap = support::matrix({"010", "100", "001"});
  EXPECT_EQ(searched(swap, support::line(3), 2000).count(), 3);
  EXPECT_EQ(searched(swap, support::line(3), 2000, 1).count(), 0);
}

TEST(DeviceSearch, FewerLayers) {
  support::Rng rng(4);
  const structures::Graph device = support::grid(4, 3);
  const BoolMatrix m = support::random_invertible(device.n, rng);
  const auto depth = [&](const GateList& list) {
    return structures::CnotCircuit(device.n, cnots(list)).depth();
  };
  const GateList shallow = searched(m, device, 20000, 0, 1, true);
  EXPECT_EQ(fault(shallow, m, device, 0), "");
  EXPECT_LT(depth(shallow), depth(searched(m, device, 20000)));
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

/// Rows as one number, by a search of all maps, nothing left out.
TEST(DeviceSearch, TablesOfALine) {
  using Rows = std::array<unsigned, 4>;
  const auto small = [](const Rows& rows) {
    return static_cast<SmallMatrix>(rows[0] | rows[1] << 4 | rows[2] << 8 | rows[3] << 12);
  };
  std::map<Rows, int> exact{{Rows{1, 2, 4, 8}, 0}};
  std::queue<Rows> queue({Rows{1, 2, 4, 8}});
  for (; !queue.empty(); queue.pop()) {
    for (std::size_t v = 0; v < 3; ++v) {
      for (const auto& [c, t] : {std::pair(v, v + 1), std::pair(v + 1, v)}) {
        Rows next = queue.front();
        next[t] ^= next[c];
        if (exact.emplace(next, exact[queue.front()] + 1).second) queue.push(next);
      }
    }
  }
  const WindowGraph line = pair_bit(0, 1) | pair_bit(1, 2) | pair_bit(2, 3);
  const MapTable& in_place = MapTable::of(4, line, false);
  const MapTable& moved = MapTable::of(4, line, true);
  EXPECT_EQ(exact.size(), 20160u);
  for (const auto& [rows, gates] : exact) {
    ASSERT_EQ(in_place.distance(small(rows)), gates);
    int least = gates;
    Rows other = rows;
    std::sort(other.begin(), other.end());
    do least = std::min(least, exact[other]);
    while (std::next_permutation(other.begin(), other.end()));
    ASSERT_EQ(moved.distance(small(rows)), least);
  }
}

}  // namespace
