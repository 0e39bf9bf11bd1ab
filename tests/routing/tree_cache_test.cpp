#include <gtest/gtest.h>

#include "support/circuits.h"
#include "support/digest.h"
#include "support/graphs.h"
#include "support/scripted_uniform.h"
#include "zeltbraidwerk/routing/linear_nnizer.h"

namespace {

using namespace synthesis;
using structures::Gate;
using structures::Graph;
using structures::OperatorTableau;
using support::Rng;

struct Search {
  int depth;
  bool by_depth;
};

/// What a function made or threw, and the trees in the cache afterwards.
template <class Run>
std::string outcome(const Graph& graph, Run&& run) {
  std::string text;
  testing::internal::CaptureStdout();
  try {
    text = run();
  } catch (const std::logic_error& error) {  // a tree closes a cycle, or is in parts
    text = error.what();
  }
  testing::internal::GetCapturedStdout();
  return text + '\n' + support::cached_trees(graph);
}

std::string text_of(int cost, const std::vector<Gate>& gates, int qubit, int index, bool flip) {
  return std::to_string(cost) + ": " + support::show(gates) + ", to " + std::to_string(qubit) +
         (flip ? " minus " : " plus ") + std::to_string(index);
}

std::string routed(const std::vector<Gate>& circuit, Graph& graph, const Search& search) {
  return outcome(graph, [&] {
    const auto route = search.by_depth ? clifford_nnize_depth : clifford_nnize;
    OperatorTableau frame(graph.n);
    std::vector<Gate> out;
    route(circuit, graph, search.depth, true, false, out, frame, graph.sketch_mode);
    return support::show(out);
  });
}

std::string chosen(std::vector<RotationSequence> blocks, Graph& graph, const Search& search) {
  return outcome(graph, [&] {
    const auto choose = search.by_depth ? cost_clifford_order_depth : cost_clifford_order;
    std::vector<Gate> gates;
    int qubit = -1;
    int index = 0;
    bool flip = false;
    const int cost =
        choose(0, blocks, OperatorTableau(graph.n), graph, search.depth, gates, qubit, index, flip);
    return text_of(cost, gates, qubit, index, flip);
  });
}

TEST(TreeCache, AnswersLaterCalls) {
  Graph line = support::line(3);
  line.set_shortest_paths();
  line.sketches = {{2}, {2}, {2}};
  const auto route = [&line](const std::vector<Gate>& circuit, int sketch_mode) {
    OperatorTableau frame(3);
    std::vector<Gate> out;
    clifford_nnize(circuit, line, 0, true, true, out, frame, sketch_mode);
    return support::show(out);
  };
  const Gate cnot = Gate::CNOT(0, 1);
  const Gate turn("RZ", {1}, {0.3}, true);
  // The rotations IZZ and ZZI: the second one's tree is asked for, and not walked.
  EXPECT_EQ(
      route({Gate::CNOT(1, 2), Gate("RZ", {2}, {0.2}, true), Gate::CNOT(1, 2), cnot, turn}, 0),
      "CNOT 2 1, RZ 1, CNOT 2 1, CNOT 1 0, RZ 0");
  EXPECT_EQ(route({cnot, turn}, 1), "CNOT 1 0, RZ 0");
}

/// Both builders in turn on one graph: gates, errors, and the trees in the cache, where each
/// lookahead asks for the tree of every rotation of its block.
TEST(TreeCache, KeepsItsTreesAndGates) {
  Rng rng(81);
  support::Digest digest;
  for (int k = 0; k < 300; ++k) {
    const int n = 1 + k % 6;
    Graph graph = support::random_device(n, 10, rng);
    graph.set_shortest_paths();
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
      const Search search{static_cast<int>(rng() % (n > 4 ? 3 : 4)), rng() % 2 == 0};
      const auto circuit = support::random_circuit(n, static_cast<int>(rng() % 30),
                                                   support::AngleKind::symbolic, rng);
      OperatorTableau start(n);
      const auto blocks = normalize_circuit(circuit, start, true, false).first;
      digest.add(chosen(blocks, graph, search));
      digest.add(routed(circuit, graph, search));
    }
  }
  EXPECT_EQ(digest.text(), "9f6694f81b5d7818");
}

}  // namespace
