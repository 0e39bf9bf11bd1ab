#include "zeltbraidwerk/clifford/clifford_circuit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "support/pauli.h"
#include "zeltbraidwerk/clifford/internal/elimination.h"

namespace {

using namespace support;
using namespace zelt::braidwerk::internal;
using structures::Gate;
using structures::OperatorTableau;

TEST(CliffordCircuit, acts_as_the_tableau) {
  std::mt19937 rng(1);
  for (int n : {1, 2, 3, 4, 5, 8, 13, 33, 70}) {
    for (int round = 0; round < (n < 10 ? 100 : 3); ++round) {
      const auto wanted = tableau_of(random_clifford(n, n * (2 + round % 20), rng), n);
      const auto circuit = synthesis::clifford_circuit(wanted);
      ASSERT_EQ(images(tableau_of(circuit, n)), images(wanted)) << n << " qubits, round " << round;
      const auto cnots = std::ranges::count(circuit, "CNOT", &Gate::name);
      EXPECT_LE(cnots, 2L * n * n + 3L * n);
    }
  }
}

TEST(CliffordCircuit, takes_no_gates_for_nothing) {
  EXPECT_TRUE(synthesis::clifford_circuit(OperatorTableau(4)).empty());
  EXPECT_TRUE(synthesis::clifford_circuit(OperatorTableau(0)).empty());
  const std::vector<Gate> cnot{Gate::CNOT(1, 0)};
  EXPECT_EQ(synthesis::clifford_circuit(tableau_of(cnot, 2)), cnot);
}

TEST(CliffordElimination, leaves_permuted_wires_and_closes_them) {
  PauliFrame swapped = identity_images(3);
  swapped.apply(TwoQubitGate::swap, 0, 2);
  Elimination found = eliminate_clifford(swapped, false);
  EXPECT_TRUE(found.gates.empty());
  EXPECT_EQ(found.wires, (std::vector<int>{2, 1, 0}));
  found.close();
  EXPECT_EQ(found.gates.size(), 3U);
  EXPECT_EQ(found.wires, (std::vector<int>{0, 1, 2}));
}

TEST(CliffordElimination, ends_on_images_of_no_operator) {
  OperatorTableau nonsense(3);
  std::ranges::fill(nonsense.data, 1);
  synthesis::clifford_circuit(nonsense);
  eliminate_clifford(PauliFrame(4, 8), false);
}

}  // namespace
