#include <gtest/gtest.h>

#include <algorithm>

#include "support/circuits.h"
#include "support/digest.h"
#include "support/graphs.h"
#include "support/pauli.h"
#include "support/scripted_uniform.h"
#include "zeltbraidwerk/routing/internal/route.h"
#include "zeltbraidwerk/routing/ion_nnizer.h"
#include "zeltbraidwerk/routing/linear_nnizer.h"

namespace {

using namespace synthesis;
using structures::DefaultMetric;
using structures::Gate;
using structures::Graph;
using structures::OperatorTableau;
using structures::ShelveMetric;
using support::AngleKind;
using support::Rng;
using support::turn;
using zelt::braidwerk::internal::FanInCost;
using zelt::braidwerk::internal::RoutingOptions;

Graph device(Graph g) {
  g.set_shortest_paths();
  return g;
}

Graph random_device(int n, Rng& rng) {
  return device(support::random_device(n, 10, rng));
}

std::string texts(const std::vector<Gate>& gates) {
  std::string text;
  for (const Gate& gate : gates) text += gate.to_string() + ", ";
  return text;
}

RoutingOptions random_options(int depths, Rng& rng) {
  RoutingOptions options;
  options.depth = static_cast<int>(rng() % static_cast<unsigned>(depths));
  options.commuting_blocks = rng() % 4 != 0;
  options.merge = rng() % 2 == 0;
  return options;
}

/// Quiet, whatever the objective.
std::vector<Gate> routed(const std::vector<Gate>& circuit, Graph& graph,
                         const RoutingOptions& options, OperatorTableau& frame) {
  std::vector<Gate> out;
  EXPECT_TRUE(zelt::braidwerk::internal::route(circuit, graph, options, out, frame));
  return out;
}

TEST(Routing, SmallCircuits) {
  Graph line = device(support::line(3));
  const auto route = [&line](const std::vector<Gate>& circuit) {
    OperatorTableau frame(3);
    std::vector<Gate> out;
    clifford_nnize(circuit, line, 0, true, true, out, frame, 0);
    return texts(out);
  };
  EXPECT_EQ(route({Gate::H(0), Gate::CNOT(0, 2)}), "");
  EXPECT_EQ(route({turn("RZ", 0, 0.3)}), "RZ [0 ]0.3 (diag), ");
  EXPECT_EQ(route({turn("RX", 1, 0.3), turn("RZ", 1, 0.2)}),
            "H [1 ], RZ [1 ]0.3 (diag), H [1 ], RZ [1 ]0.2 (diag), ");
  EXPECT_EQ(route({Gate::CNOT(0, 2), turn("RZ", 2, 0.3)}),
            "CNOT [1 0 ], CNOT [2 1 ], CNOT [1 0 ], RZ [0 ]0.3 (diag), ");
  OperatorTableau none(0);
  Graph empty = device(Graph(0));
  std::vector<Gate> out;
  clifford_nnize({}, empty, 3, false, true, out, none, 0);
  EXPECT_TRUE(out.empty());
}

TEST(Routing, ChoosesNoRootWhereNothingIsToDo) {
  Graph line = device(support::line(4));
  std::vector<RotationSequence> blocks{{}, {{"ZZZZ", 0.1}}};
  std::vector<Gate> gates;
  int qubit = -1;
  int index = -1;
  bool flip = true;
  for (const int block : {0, 2, 3, -1}) {
    EXPECT_EQ(
        cost_clifford_order(block, blocks, OperatorTableau(4), line, 1, gates, qubit, index, flip),
        0);
    EXPECT_TRUE(gates.empty() && qubit == -1 && index == -1 && flip);
  }
  blocks = {{{"IIII", 0.1}}};
  qubit = -1;
  EXPECT_EQ(cost_clifford_order(0, blocks, OperatorTableau(4), line, 2, gates, qubit, index, flip),
            0);
  EXPECT_EQ(qubit, -1);
}

/// Any options, frames other than the identity, and both kinds of trees.
TEST(Routing, KeepsItsGates) {
  Rng rng(74);
  support::uniform_script = [&](int a, int b) {
    return a + static_cast<int>(rng() % support::at(b - a + 1));
  };
  support::Digest digest;
  for (int k = 0; k < 700; ++k) {
    const int n = 1 + k % 6;
    Graph graph = random_device(n, rng);
    graph.sketch_mode = k % 5 == 0 ? 1 : 0;
    if (graph.sketch_mode != 0) graph.initialize_sketches();
    const auto kind = k % 3 == 0 ? AngleKind::symbolic : AngleKind::numeric;
    const auto circuit = support::random_circuit(n, static_cast<int>(rng() % 50), kind, rng);
    RoutingOptions options = random_options(4, rng);
    const bool by_depth = k % 4 == 1;
    if (by_depth) options.objective = FanInCost::depth;
    OperatorTableau frame(n);
    if (k % 7 == 0) frame.ry_plus_left(0);
    const OperatorTableau start = frame;
    std::vector<Gate> out;
    try {  // sketched trees may close cycles
      out = routed(circuit, graph, options, frame);
      digest.add(out, frame);
    } catch (const std::logic_error& error) {
      digest.add(std::string_view(error.what()));
      EXPECT_NE(graph.sketch_mode, 0);
    }
    if (!by_depth || graph.sketch_mode != 0) continue;
    testing::internal::CaptureStdout();
    std::vector<Gate> told;
    frame = start;
    clifford_nnize_depth(circuit, graph, options.depth, options.commuting_blocks, options.merge,
                         told, frame, 0);
    digest.add(testing::internal::GetCapturedStdout());
    ASSERT_EQ(told, out) << k;
  }
  EXPECT_EQ(digest.text(), "c8b61520fa704032");
}

/// Long trees, more vertices than a word has bits; without the graph's cache, then filling it, then
/// out of it.
TEST(Routing, KeepsItsGatesOnLargeDevices) {
  Rng rng(80);
  support::Digest digest;
  for (int k = 0; k < 24; ++k) {
    Graph graph = k % 3 == 0   ? device(support::grid(6, 4 + k % 7))
                  : k % 3 == 1 ? device(support::line(30, true))
                               : random_device(70, rng);
    const auto circuit = support::random_circuit(graph.n, 5 * graph.n, AngleKind::numeric, rng);
    std::vector<std::vector<Gate>> found;
    for (const bool keeps_trees : {false, true, true}) {
      OperatorTableau frame(graph.n);
      RoutingOptions options;
      options.keeps_trees = keeps_trees;
      found.push_back(routed(circuit, graph, options, frame));
      digest.add(frame);
      ASSERT_EQ(found.back(), found.front()) << k;
      ASSERT_EQ(graph.steiner_cache.empty(), !keeps_trees) << k;
    }
    digest.add(found);
  }
  EXPECT_EQ(digest.text(), "ed0014ebc373b445");
}

TEST(Routing, TreesInTheCacheAnswerLaterCalls) {
  Graph line = device(support::line(3));
  line.sketches = {{2}, {2}, {2}};
  const auto route = [&line](const std::vector<Gate>& circuit, int sketch_mode) {
    OperatorTableau frame(3);
    std::vector<Gate> out;
    clifford_nnize(circuit, line, 0, true, true, out, frame, sketch_mode);
    return support::show(out);
  };
  const Gate cnot = Gate::CNOT(0, 1);
  const Gate back = Gate::CNOT(1, 2);
  // The rotations IZZ and ZZI: the second one's tree is asked for, and not walked.
  EXPECT_EQ(route({back, turn("RZ", 2, 0.2), back, cnot, turn("RZ", 1, 0.3)}, 0),
            "CNOT 2 1, RZ 1, CNOT 2 1, CNOT 1 0, RZ 0");
  EXPECT_EQ(route({cnot, turn("RZ", 1, 0.3)}, 1), "CNOT 1 0, RZ 0");
}

/// Both builders in turn on one graph: gates, errors, and the trees in the cache, where each
/// lookahead asks for the tree of every rotation of its block.
TEST(Routing, KeepsItsTrees) {
  Rng rng(81);
  support::Digest digest;
  for (int k = 0; k < 300; ++k) {
    const int n = 1 + k % 6;
    Graph graph = random_device(n, rng);
    if (k % 5 == 0) {  // a disconnected device, where some roots have no fan-in
      graph.disconnect(static_cast<int>(rng() % support::at(n)));
      graph.update_shortest_paths();
    }
    support::uniform_script = [&](int a, int b) {
      return a + static_cast<int>(rng() % support::at(b - a + 1));
    };
    graph.initialize_sketches();
    for (int call = 0; call < 4; ++call) {
      graph.sketch_mode = static_cast<int>(rng() % 2);
      const int depth = static_cast<int>(rng() % (n > 4 ? 3 : 4));
      const bool by_depth = rng() % 2 == 0;
      const auto circuit =
          support::random_circuit(n, static_cast<int>(rng() % 30), AngleKind::symbolic, rng);
      OperatorTableau frame(n);
      auto blocks = normalize_circuit(circuit, frame, true, false).first;
      std::vector<Gate> gates, out;
      int qubit = -1;
      int index = 0;
      bool flip = false;
      testing::internal::CaptureStdout();
      try {  // a tree closes a cycle, or is in parts
        const auto choose = by_depth ? cost_clifford_order_depth : cost_clifford_order;
        digest.add(choose(0, blocks, OperatorTableau(n), graph, depth, gates, qubit, index, flip));
        digest.add(gates, qubit, index, flip, support::cached_trees(graph));
        const auto route = by_depth ? clifford_nnize_depth : clifford_nnize;
        route(circuit, graph, depth, true, false, out, frame, graph.sketch_mode);
      } catch (const std::logic_error& error) {
        digest.add(std::string_view(error.what()));
      }
      testing::internal::GetCapturedStdout();
      digest.add(out, frame, support::cached_trees(graph));
    }
  }
  EXPECT_EQ(digest.text(), "4b0bdf2f98cda795");
}

TEST(Routing, IonsKeepTheirGates) {
  Rng rng(75);
  support::Digest digest;
  for (int k = 0; k < 400; ++k) {
    const int n = 1 + k % 6;
    const auto kind = k % 3 == 0 ? AngleKind::symbolic : AngleKind::numeric;
    const auto circuit = support::random_circuit(n, static_cast<int>(rng() % 40), kind, rng);
    const RoutingOptions o = random_options(3, rng);
    std::vector<Gate> out, shelved;
    OperatorTableau frame(n), shelved_frame(n);
    clifford_nnize_ion(circuit, o.depth, o.commuting_blocks, o.merge, out, frame);
    clifford_nnize_ion_shelving(circuit, o.depth, o.commuting_blocks, o.merge, 0.01, 0.003, shelved,
                                shelved_frame);
    digest.add(out, frame, shelved, shelved_frame);
  }
  EXPECT_EQ(digest.text(), "e796c73e910f9e64");
}

TEST(Routing, Metrics) {
  std::vector<int> pair{0, 1};
  ShelveMetric shelving(3, 0.01, 0.001);
  EXPECT_DOUBLE_EQ(shelving.get_score(pair), (1 - 0.001) * (1 - 0.01));
  shelving.update(pair);
  EXPECT_DOUBLE_EQ(shelving.get_score(pair), 1 - 0.01);
  std::vector<int> moved{1, 2};
  EXPECT_DOUBLE_EQ(shelving.get_score(moved), (1 - 0.002) * (1 - 0.01));
  // Ions without a bit of their own never change.
  ShelveMetric bare(0, 0.25, 0.1);
  std::vector<int> three{0, 1, 2};
  EXPECT_EQ(bare.get_score(three), 0.25);
  bare.update(three);
  EXPECT_EQ(bare.get_score(three), 0.25);
  shelving.update(three = {0, 1, 7});
  EXPECT_DOUBLE_EQ(shelving.get_score(three), 1 - 0.03);
  EXPECT_TRUE(shelving.compare(0.5, -1) && shelving.compare(0.6, 0.5));
  EXPECT_FALSE(shelving.compare(0.5, 0.5) || DefaultMetric().compare(5, 5));
  std::vector<RotationSequence> blocks{{{"ZZZZZ", 0.1}, {"YIIIZ", 0.2}}};
  std::vector<Gate> gates;
  int qubit = -1;
  int index = -1;
  bool flip = false;
  DefaultMetric pairs;
  EXPECT_EQ(clifford_cost_ions(0, blocks, OperatorTableau(5), 0, gates, qubit, index, flip, pairs),
            1.0);
  EXPECT_EQ(texts(gates), "RX [0 ]1.5708 , RX [0 ]-1.5708 , H [4 ], XX [0 4 ]1.5708 , ");
  EXPECT_TRUE(qubit == 0 && index == 1 && !flip);
  EXPECT_EQ(gates[3].params[1].value, 2.0);
}

/// Thousands of circuits, for every algorithm: the rotations, the final Clifford operator and the
/// edges.
TEST(Routing, KeepsWhatTheCircuitDoes) {
  Rng rng(76);
  for (int k = 0; k < 10000; ++k) {
    const int n = 1 + static_cast<int>(rng() % (k % 100 == 0 ? 40 : 10));
    const auto circuit =
        support::random_circuit(n, static_cast<int>(rng() % 40), AngleKind::symbolic, rng);
    const bool commuting = rng() % 4 != 0;
    OperatorTableau frame(n);
    std::vector<Gate> out;
    if (k % 5 < 3) {
      Graph graph = random_device(n, rng);
      RoutingOptions options;
      options.depth = n > 6 ? 0 : k % 3;
      options.commuting_blocks = commuting;
      options.merge = false;
      if (k % 2 == 0) options.objective = FanInCost::depth;
      out = routed(circuit, graph, options, frame);
      ASSERT_TRUE(support::runs_on(graph, out)) << k;
    } else if (k % 5 == 3) {
      clifford_nnize_ion(circuit, k % 3, commuting, false, out, frame);
    } else {
      clifford_nnize_ion_shelving(circuit, k % 2, commuting, false, 0.01, 0.001, out, frame);
    }
    // Blocks join equal strings, whose sums are not looked at here.
    if (std::ranges::any_of(out, [](const Gate& gate) {
          return !gate.params.empty() && gate.params[0].expression.find("+ ") != std::string::npos;
        })) {
      continue;
    }
    ASSERT_EQ(support::fault(circuit, out, frame), "") << k;
  }
}

TEST(Routing, StopsWhenAsked) {
  Rng rng(78);
  Graph graph = device(support::grid(4, 4));
  const auto circuit = support::random_circuit(16, 400, AngleKind::symbolic, rng);
  RoutingOptions options;
  options.depth = 1000;  // would never end
  options.control.deadline =
      zelt::braidwerk::internal::Control::Clock::now() + std::chrono::milliseconds(20);
  std::vector<Gate> out;
  OperatorTableau frame(16);
  EXPECT_FALSE(zelt::braidwerk::internal::route(circuit, graph, options, out, frame));
  OperatorTableau ion_frame(16);
  EXPECT_FALSE(route_ions(circuit, DefaultMetric(), options, out, ion_frame));
}

}  // namespace
