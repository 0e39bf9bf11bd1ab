// Lower bounds of all families: never above what some circuit takes, and what becomes of a search
// that they end.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <set>
#include <string>
#include <vector>

#include "support/gate_lists.h"
#include "support/oracles.h"
#include "zeltbraidwerk/clifford/search/internal/operator_bound.h"
#include "zeltbraidwerk/clifford/search/internal/search.h"
#include "zeltbraidwerk/clifford/search/internal/state_bound.h"
#include "zeltbraidwerk/clifford/search/internal/state_search.h"
#include "zeltbraidwerk/linear/search/internal/cnot_search.h"
#include "zeltbraidwerk/linear/search/internal/depth_search.h"
#include "zeltbraidwerk/linear/search/internal/depth_table.h"
#include "zeltbraidwerk/linear/search/internal/device_search.h"
#include "zeltbraidwerk/linear/search/internal/map_bound.h"
#include "zeltbraidwerk/pauli/search/internal/network_bound.h"
#include "zeltbraidwerk/phase/search/internal/parity_bound.h"
#include "zeltbraidwerk/phase/search/internal/small_networks.h"

namespace {

using namespace zelt::braidwerk::internal;
using support::at;
using support::map_of;
using support::path;
using support::pulled_back;
using support::random_gates;
using support::Rng;

/// Those of two wires or more, once each, one column per parity.
BitMatrix different_parities(const std::set<std::vector<bool>>& parities, int n) {
  BitMatrix columns(n, static_cast<int>(parities.size()));
  int column = 0;
  for (const std::vector<bool>& parity : parities) {
    for (int w = 0; w < n; ++w) columns.set(w, column, parity[at(w)]);
    ++column;
  }
  return columns;
}

std::string shown(const LowerBound& bound, int count, int depth) {
  return "bound " + std::to_string(bound.count) + ", " + std::to_string(bound.depth) +
         "; there is one of " + std::to_string(count) + ", " + std::to_string(depth);
}

/// How often a bound was met by the circuit that a problem was made from.
struct Tally {
  int met = 0;
  int all = 0;
  void add(const LowerBound& bound, int count, int depth) {
    EXPECT_LE(bound.count, count) << shown(bound, count, depth);
    EXPECT_LE(bound.depth, depth) << shown(bound, count, depth);
    met += bound.count == count ? 1 : 0;
    ++all;
  }
};

TEST(Bounds, OfMapsAreNotAboveTheShortestCircuit) {
  Rng rng(1);
  const BitGraph edges_of_path = path(5);
  WindowGraph edges = 0;
  for (int v = 1; v < 5; ++v) edges = static_cast<WindowGraph>(edges | pair_bit(v - 1, v));
  std::array<Tally, 4> tallies;
  for (int k = 0; k < 4000; ++k) {
    const auto gates = random_gates(5, k % 9, k % 2 == 0 ? nullptr : &edges_of_path, false, rng);
    const BitMatrix m = map_of(gates, 5);
    const SmallMatrix small = small_matrix(m);
    const int depth = depth_of(gates, 5);
    for (const bool exact : {false, true}) {
      const int shortest = MapTable::of(5, complete_graph(5), !exact).distance(small);
      tallies[exact].add(bound_of_map(m, exact), shortest, depth);
      if (k % 2 == 0) continue;
      const int on_path = MapTable::of(5, edges, !exact).distance(small);
      tallies[2 + exact].add(bound_of_map_on_device(m, edges_of_path, exact ? 0 : any_reach),
                             on_path, depth);
    }
  }
  for (const Tally& tally : tallies) EXPECT_GT(tally.met * 10, tally.all);
}

/// Of which a layer is one gate.
TEST(Bounds, OfMapsKnowTheFewestLayersOfThreeWires) {
  Rng rng(4);
  for (const bool permuted : {false, true}) {
    const MapTable& table = MapTable::of(3, complete_graph(3), permuted);
    std::set<SmallMatrix> maps;
    for (int k = 0; k < 4000; ++k) {
      maps.insert(small_matrix(map_of(random_gates(3, k % 12, nullptr, false, rng), 3)));
    }
    EXPECT_EQ(maps.size(), 168U);
    for (const auto m : maps) EXPECT_EQ(fewest_layers(3, m, permuted), table.distance(m));
  }
}

/// The plain way: by levels, over what the wires hold and which parities were shown.
int fewest_gates(const std::set<unsigned>& parities, int n, bool undone, bool in_place) {
  using State = std::pair<std::vector<unsigned>, std::set<unsigned>>;
  State first;
  for (int w = 0; w < n; ++w) first.first.push_back(1U << w);
  std::set<State> seen{first};
  std::vector<State> level{first};
  for (int gates = 0;; ++gates) {
    std::vector<State> next;
    for (const auto& [wires, shown] : level) {
      std::vector<unsigned> outputs = wires;
      if (!in_place) std::ranges::sort(outputs);
      if (shown == parities && (!undone || outputs == first.first)) return gates;
      for (int control = 0; control < n; ++control) {
        for (int target = 0; target < n; ++target) {
          State child{wires, shown};
          child.first[at(target)] ^= wires[at(control)];
          const unsigned inputs = child.first[at(target)];
          if (parities.contains(inputs)) child.second.insert(inputs);
          if (control != target && seen.insert(child).second) next.push_back(std::move(child));
        }
      }
    }
    level = std::move(next);
  }
}

TEST(Bounds, OfParitiesComeToTheShortestNetworksOfFewWires) {
  Rng rng(3);
  for (int k = 0; k < 60; ++k) {
    const int n = k % 5 == 0 ? 4 : 3;
    std::set<unsigned> parities;
    std::set<std::vector<bool>> bits;
    for (int p = 0; p < 1 + k % 3; ++p) {
      const unsigned parity = static_cast<unsigned>(rng()) % (1U << n);
      if (std::popcount(parity) < 2) continue;
      parities.insert(parity);
      std::vector<bool> of_wire;
      for (int w = 0; w < n; ++w) of_wire.push_back((parity >> w & 1) != 0);
      bits.insert(of_wire);
    }
    const BitMatrix columns = different_parities(bits, n);
    for (const Outputs outputs : {Outputs::left_open, Outputs::anywhere, Outputs::in_place}) {
      const int fewest =
          fewest_gates(parities, n, outputs != Outputs::left_open, outputs == Outputs::in_place);
      const Task task{.outputs = outputs, .seed = 1};
      EXPECT_LE(bound_of_parities(columns, task).count, fewest);
      EXPECT_EQ(search_small_networks(columns, task, 0, 100).least, fewest);
      Effort effort;  // it ends by itself
      const auto found = search_parities(columns, task, effort);
      EXPECT_EQ(std::ranges::count_if(found.gates, &PhaseStep::is_cnot), fewest);
    }
  }
}

/// Problems made from short circuits with more wires than there are tables for.
TEST(Bounds, OfLargerProblemsAreNotAboveTheCircuitsThatTheyAreMadeFrom) {
  Rng rng(2);
  std::array<Tally, 4> tallies;
  for (int k = 0; k < 3000; ++k) {
    const int n = 4 + k % 6;
    const BitGraph along = path(n);
    const BitGraph* graph = k % 3 == 0 ? &along : nullptr;
    const auto cnots = random_gates(n, k % 11, graph, false, rng);
    const int depth = depth_of(cnots, n);
    const auto count = static_cast<int>(cnots.size());
    const BitMatrix m = map_of(cnots, n);
    tallies[0].add(
        graph == nullptr ? bound_of_map(m, k % 2 == 0) : bound_of_map_on_device(m, along, 0), count,
        depth);

    // Every parity that comes up, or some of them; undone by the way back.
    BitMatrix map = BitMatrix::identity(n);
    std::set<std::vector<bool>> shown;
    for (int g = 0; g < count; ++g) {
      const int target = wire_of(cnots[at(g)].b);
      map.add_row(wire_of(cnots[at(g)].a), target);
      if (map.row_weight(target) < 2 || (k % 4 == 0 && rng() % 2 == 0)) continue;
      std::vector<bool> parity;
      for (int w = 0; w < n; ++w) parity.push_back(map.get(target, w));
      shown.insert(parity);
    }
    const BitMatrix parities = different_parities(shown, n);
    Task task;
    task.device = graph;
    for (const Outputs outputs : {Outputs::left_open, Outputs::anywhere, Outputs::in_place}) {
      task.outputs = outputs;
      const int times = outputs == Outputs::left_open ? 1 : 2;
      tallies[1].add(bound_of_parities(parities, task), times * count, times * depth);
    }

    const auto gates = random_gates(n, k % 11, graph, true, rng);
    const GateList list(n, gates);
    const int layers = depth_of(gates, n);
    const PauliFrame images = pulled_back(gates, count, n);
    for (const Outputs outputs : {Outputs::anywhere, Outputs::in_place}) {
      tallies[2].add(bound_of_operator(OperatorRows(images), outputs, graph), count, layers);
    }

    // Rotations about what is on a wire after some of the gates.
    PauliFrame strings(n, count);
    for (int g = 0; g < count; ++g) {
      const PauliFrame back = pulled_back(gates, g + 1, n);
      const int row = static_cast<int>(rng() % static_cast<unsigned>(2 * n));
      for (int q = 0; q < n; ++q) strings.set_letter(g, q, back.letter(row, q));
    }
    NetworkTask network;
    network.device = graph;
    network.in_order = k % 2 == 0;
    for (const Outputs outputs : {Outputs::left_open, Outputs::anywhere, Outputs::in_place}) {
      network.outputs = outputs;
      const int times = outputs == Outputs::left_open ? 1 : 2;
      const LowerBound bound = bound_of_network(strings, network);
      tallies[3].add(bound, times * count, times * layers);
      if (n == 4 && k % 5 == 0) {
        EXPECT_LE(fewest_network_gates(strings, network, bound.count, 100), times * count);
      }
    }
  }
  for (const Tally& tally : tallies) EXPECT_GT(tally.met * 20, tally.all);
}

}  // namespace
