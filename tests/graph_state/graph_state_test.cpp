#include "zeltbraidwerk/graph_state/graph_state.h"

#include <gtest/gtest.h>

#include "support/oracles.h"
#include "support/scripted_uniform.h"
#include "zeltbraidwerk/graph_state/internal/synthesis.h"
#include "zeltbraidwerk/graph_state/synthesis.h"

namespace {

using namespace zelt::braidwerk::internal;
using structures::Gate;
using support::at;
using support::matrix;
using support::random_symmetric;
using support::Rng;
using support::show;

/// The action by its definition, a bit at a time.
BoolMatrix acted_on(BoolMatrix graph, const TripleCircuit& circuit) {
  for (const auto& [code, a, b] : circuit) {
    const auto flip = [&](int r, int c) { graph[at(r)][at(c)] = !graph[at(r)][at(c)]; };
    if (code == 0) flip(a, a);
    if (code == 1) flip(a, b);
    if (code == 1) flip(b, a);
    if (code != 2) continue;
    for (BoolRow& row : graph) row[at(a)] = row[at(a)] != row[at(b)];
    support::add_row(graph, b, a);
  }
  return graph;
}

bool is_empty(const BoolMatrix& graph) {
  return graph == BoolMatrix(graph.size(), BoolRow(graph.size()));
}

TEST(GraphState, NaiveSynthesisIsOneGatePerOne) {
  std::string text;
  for (const Gate& gate : naive_gs_synthesis(matrix({"101", "011", "110"}))) {
    text += gate.to_string() + ";";
  }
  EXPECT_EQ(text,
            "RZ [0 ]1.5708 (diag);CSIGN [0 2 ];RZ [1 ]1.5708 (diag);CSIGN [1 2 ];H [0 ];H [1 ];"
            "H [2 ];");
  EXPECT_TRUE(naive_gs_synthesis({}).empty());
}

TEST(GraphState, CircuitsActOnTheLeadingBlock) {
  Rng rng(2);
  for (int round = 0; round < 50; ++round) {
    const int n = 2 + round % 4;
    BoolMatrix graph = random_symmetric(n, rng);
    TripleCircuit circuit;
    for (int k = 0; k < 8; ++k) {
      const int a = static_cast<int>(rng() % at(n));
      circuit.emplace_back(rng() % 4, a, (a + 1) % n);
    }
    const BoolMatrix wanted = acted_on(graph, circuit);
    simulate_circuit(graph, circuit, n);
    EXPECT_EQ(show(graph), show(wanted));
  }
  BoolMatrix wide = matrix({"011", "101", "111"});
  simulate_circuit(wide, {{2, 0, 1}, {1, 0, 1}, {7, 5, 5}}, 2);
  EXPECT_EQ(show(wide), "001 001 111");
  EXPECT_NO_THROW(check_circuit(matrix({"01", "10"}), {{1, 0, 1}}, 2));
  EXPECT_THROW(check_circuit(matrix({"01", "10"}), {}, 2), std::logic_error);
}

TEST(GraphState, RandomGraphsDrawTheUpperTriangleInOrder) {
  int draws = 0;
  support::uniform_script = [&](int a, int b) { return a + (draws++ % 2) * (b - a); };
  EXPECT_EQ(show(random_graph(3)), "010 110 001");
  EXPECT_EQ(draws, 6);
  EXPECT_TRUE(random_graph(0).empty());
}

TEST(GraphState, PrintsCircuitsAndMatrices) {
  testing::internal::CaptureStdout();
  print_circuit({{0, 3, 0}, {1, 0, 2}, {3, 1, 1}, {2, 4, 5}});
  pretty_print(matrix({"01", "11"}), 2, 1);
  pretty_print(BoolRow{true, false, true}, 2);
  pretty_print(std::vector<int>{7, 8}, 2);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "S    3\nCZ   0 2\nCNOT 4 5\n\n0 \n1 \n\n1 0 \n7 8 \n");
}

TEST(GraphStateSynthesis, SolvesEveryGraph) {
  Rng rng(3);
  for (int round = 0; round < 3000; ++round) {
    const int n = 1 + round % 5;
    const BoolMatrix graph = random_symmetric(n, rng);
    TripleCircuit circuit;
    synthesise_graph_state(BitMatrix::pack(graph, n, n), circuit, round % 3, SeededDraw(7, 0), {});
    ASSERT_TRUE(is_empty(acted_on(graph, circuit))) << show(graph);
  }
  for (const int n : {20, 63, 64, 65, 70}) {
    const BoolMatrix graph = random_symmetric(n, rng);
    TripleCircuit circuit;
    graph_state_synthesis(graph, circuit, n, 2);
    EXPECT_TRUE(is_empty(acted_on(graph, circuit)));
  }
}

}  // namespace
