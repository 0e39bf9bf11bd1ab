#include "zeltbraidwerk/routing/stim_nnizer.h"

#include <gtest/gtest.h>

#include <numbers>

#include "stim/stabilizers/pauli_string.h"
#include "stim/stabilizers/tableau.h"
#include "support/circuits.h"
#include "support/graphs.h"
#include "zeltbraidwerk/routing/linear_nnizer.h"

namespace {

using namespace synthesis;
using structures::Gate;
using structures::Graph;
using structures::OperatorTableau;

/// On both kinds of frame: the same gates, and tableaus of the same operator.
TEST(StimRouting, AgreesWithTheOtherFrame) {
  std::mt19937 rng(79);
  for (int k = 0; k < 1000; ++k) {
    const int n = 1 + k % 8 + (k % 100 == 99 ? 70 : 0);
    Graph graph = support::random_device(n, 10, rng);
    graph.set_shortest_paths();
    const auto kind = k % 2 == 0 ? support::AngleKind::symbolic : support::AngleKind::numeric;
    const auto circuit = support::random_circuit(n, static_cast<int>(rng() % 60), kind, rng);
    const int depth = n > 6 ? 0 : static_cast<int>(rng() % 4);
    const bool commuting = rng() % 4 != 0;
    const bool merge = rng() % 2;
    OperatorTableau frame(n);
    std::vector<Gate> out;
    clifford_nnize(circuit, graph, depth, commuting, merge, out, frame, 0);
    std::mt19937_64 engine(rng());
    StimTableau stim_frame = StimTableau::random(static_cast<std::size_t>(n), engine);
    std::vector<Gate> stim_out;
    Graph stim_graph = graph;
    clifford_nnize_stim(circuit, stim_graph, depth, commuting, merge, stim_out, stim_frame, 0);
    ASSERT_EQ(stim_out, out) << k;
    ASSERT_EQ(support::cached_trees(stim_graph), support::cached_trees(graph)) << k;
    ASSERT_EQ(stim_frame, convert_to_stim(frame)) << k;
    if (out.empty()) continue;
    OperatorTableau start(n);
    auto blocks = normalize_circuit(circuit, start, commuting, merge).first;
    std::vector<StimRotations> stim_blocks;
    for (const RotationSequence& block : blocks) {
      auto& converted = stim_blocks.emplace_back();
      for (const auto& [letters, angle] : block) {
        converted.emplace_back(StimPauli::from_str(letters), angle);
      }
    }
    std::vector<Gate> gates[2];
    int qubit[2]{};
    int index[2]{};
    bool flip[2]{};
    const int block = blocks[0].empty() ? 1 : 0;
    start.rx_plus_left(0);
    ASSERT_EQ(cost_clifford_order(block, blocks, start, graph, depth, gates[0], qubit[0], index[0],
                                  flip[0]),
              cost_clifford_order_stim(block, stim_blocks, convert_to_stim(start), stim_graph,
                                       depth, gates[1], qubit[1], index[1], flip[1]));
    ASSERT_EQ(support::cached_trees(stim_graph), support::cached_trees(graph)) << k;
    ASSERT_EQ(gates[0], gates[1]) << k;
    ASSERT_TRUE(qubit[0] == qubit[1] && index[0] == index[1] && flip[0] == flip[1]) << k;
  }
}

TEST(StimRouting, Updates) {
  constexpr double pi = std::numbers::pi;
  OperatorTableau tableau(2);
  StimTableau expected(2);
  EXPECT_EQ(convert_to_stim(tableau), expected);
  const auto rx = [](double angle) { return Gate("RX", {0}, {angle}, false); };
  const auto rz = [](double angle) { return Gate("PH", {1}, {angle}, true); };
  const std::vector<Gate> gates{Gate::H(0), Gate::CNOT(0, 1),        Gate::CZ(1, 0),    rx(pi / 2),
                                rz(pi / 2), rx(3 * pi / 2 + 2 * pi), Gate::H(1),        rz(pi),
                                rx(pi),     rz(3 * pi / 2),          Gate("CZ", {0, 1})};
  for (const Gate& gate : gates) tableau.apply_left(gate);
  update_stim_tableau_left(gates, expected);
  EXPECT_EQ(convert_to_stim(tableau), expected);
  update_stim_tableau_left({rz(-pi / 2), rx(0.3), Gate("X", {0}), Gate(), Gate("I", {})}, expected);
  EXPECT_EQ(convert_to_stim(tableau), expected);
  EXPECT_THROW(
      update_stim_tableau_left({Gate("RX", {0}, {structures::Parameter("a")}, false)}, expected),
      std::logic_error);
  EXPECT_EQ(convert_to_stim(tableau), expected);
  EXPECT_EQ(support::show(get_basis_change_stim(StimPauli::from_str("YXZI"), 4)), "RX 0, H 1");
}

}  // namespace
