#include "zeltbraidwerk/pauli/codiag.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/digest.h"
#include "support/graphs.h"
#include "support/pauli.h"
#include "zeltbraidwerk/pauli/graph_state_codiag.h"
#include "zeltbraidwerk/pauli/internal/table_frame.h"
#include "zeltbraidwerk/pauli/internal/tree_diagonaliser.h"

namespace {

using structures::Gate;
using structures::Graph;
using structures::Parameter;
using support::at;
using support::numbered_angles;
using support::rows;
using support::text;
using testing::ElementsAre;

bool is_diagonal(const PauliTable& table) {
  return text(table).find_first_of("XY") == std::string::npos;
}

TEST(CoDiagonalisation, DiagonalisesAndKeepsItsGates) {
  std::mt19937 rng(1);
  support::Digest digest;
  for (int round = 0; round < 2000; ++round) {
    const int n = 1 + round % 8;
    const int m = static_cast<int>(rng() % 80);
    // Rows that do not commute as well: then too the loop ends, with what is left.
    const PauliTable before = round % 5 == 0 ? support::random_rows(m, n, rng)
                                             : support::random_commuting_rows(m, n, rng);
    PauliTable table = before;
    auto params = numbered_angles(at(m));
    const auto circuit = duncan_co_diag(table, params);
    digest.add(circuit);
    ASSERT_TRUE(support::is_rewritten_by(before, table, params, circuit)) << text(before);
    ASSERT_TRUE(round % 5 == 0 || is_diagonal(table)) << text(before);
  }
  EXPECT_EQ(digest.text(), "cf0f72ba595eced3");
}

TEST(CoDiagonalisation, TakesSteps) {
  // Symbolic angles flip as numbers do.
  PauliTable table = rows({"XXX", "YYI"});
  std::vector<Parameter> params{Parameter("a"), Parameter(2.0)};
  std::set<int> active{0, 1, 2};
  std::vector<Gate> circuit;
  update_single_qubits(table, params, active, circuit);
  EXPECT_THAT(active, ElementsAre(0, 1));
  EXPECT_TRUE(update_pair_qubits(table, params, active, circuit));
  EXPECT_THAT(active, ElementsAre(0));
  EXPECT_FALSE(update_pair_qubits(table, params, active, circuit));
  greedy_diag(table, params, active, circuit);
  EXPECT_EQ(support::show(circuit), "H 2, H 0, H 1, CNOT 0 1, H 0");
  EXPECT_EQ(text(table), "IZZ ZZI");
  EXPECT_EQ(params[1].value, -2);
  active = {1};
  table = rows({"XIX"});
  greedy_diag(table, params, active, circuit);
  EXPECT_TRUE(active.empty());
}

TEST(CoDiagonalisationOnGraphs, KeepsToTheEdgesAndEnds) {
  std::mt19937 rng(2);
  for (int round = 0; round < 3000; ++round) {
    const int n = 2 + round % 9;
    Graph graph = support::random_device(n, round % 3 == 0 ? 0 : 10, rng);
    graph.set_shortest_paths();
    const int m = 1 + static_cast<int>(rng() % 20);
    const PauliTable before = support::random_commuting_rows(m, n, rng);
    auto params = numbered_angles(at(m));
    const auto expect_right = [&](const PauliTable& table, const std::vector<Gate>& circuit) {
      ASSERT_TRUE(support::runs_on(graph, circuit));
      ASSERT_TRUE(is_diagonal(table)) << text(before);
      ASSERT_TRUE(support::is_rewritten_by(before, table, params, circuit)) << text(before);
    };
    PauliTable table = before;
    const auto circuit = generate_basis_change_aa(table, params, graph);
    expect_right(table, circuit);

    // What the loop falls back on when qubits keep coming back.
    auto frame = zelt::braidwerk::internal::pack_table(before);
    std::vector<Gate> by_tree;
    zelt::braidwerk::internal::diagonalise_on_tree(frame, graph, by_tree);
    params = numbered_angles(at(m));
    zelt::braidwerk::internal::unpack_table(frame, table, params);
    expect_right(table, by_tree);
  }
}

TEST(CoDiagonalisationOnGraphs, QubitsOfTheTreeBecomeActiveAgain) {
  Graph path = support::line(3);
  path.set_shortest_paths();
  PauliTable table = rows({"XIX", "ZIZ"});
  auto params = numbered_angles(2);
  std::set<int> active{0, 2};
  std::vector<Gate> circuit;
  EXPECT_FALSE(update_pair_qubits_aa(table, params, active, circuit, path));
  greedy_diag_aa(table, params, active, circuit, path);
  EXPECT_EQ(support::show(circuit), "H 0, H 2, CNOT 1 0, CNOT 0 1, CNOT 1 2");
  EXPECT_THAT(active, ElementsAre(0, 1));
  EXPECT_TRUE(update_pair_qubits_aa(table, params, active, circuit, path));
}

TEST(GraphStateCoDiagonalisation, DiagonalisesWhatIsOfFullRank) {
  std::mt19937 rng(3);
  support::Digest digest;
  int failures = 0;
  for (int round = 0; round < 2000; ++round) {
    const int n = 1 + round % 7;
    const int m = n + static_cast<int>(rng() % 4);
    const PauliTable before = support::random_commuting_rows(m, n, rng);
    PauliTable table = before;
    auto params = numbered_angles(at(m));
    const int method = round % 3;
    const auto circuit = generate_basis_change(table, params, method, failures);
    ASSERT_TRUE(is_diagonal(table)) << text(before);
    ASSERT_TRUE(support::is_rewritten_by(before, table, params, circuit)) << text(before);
    if (method != 2) digest.add(circuit);  // whose decoding is random
    digest.add(failures);
  }
  EXPECT_EQ(digest.text(), "8cf9907340f1bbd7");
  EXPECT_GT(failures, 100);
  EXPECT_LT(failures, 1000);
}

TEST(GraphStateCoDiagonalisation, FallsBackOnTheGreedyMethod) {
  PauliTable two = rows({"XZ", "ZX", "YY"});
  EXPECT_EQ(std::get<0>(construct_adjacency_matrix(two)), (BoolMatrix{{0, 1}, {1, 0}}));

  // Failures leave the table alone, or fall back on the greedy method.
  int failures = 0;
  for (const auto& strings : {std::vector<std::string>{"XX"}, {"XI", "YI", "IX", "IZ"}}) {
    PauliTable table = rows(strings);
    auto params = numbered_angles(table.size());
    EXPECT_THROW(graph_state_codiag(table, params, 2), std::runtime_error);
    EXPECT_EQ(table, rows(strings));
    PauliTable greedy = table;
    const auto wanted = duncan_co_diag(greedy, params);
    EXPECT_EQ(generate_basis_change(table, params, 2, failures), wanted);
    EXPECT_EQ(table, greedy);
  }
  EXPECT_EQ(failures, 2);
}

}  // namespace
