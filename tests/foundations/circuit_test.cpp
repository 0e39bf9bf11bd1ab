#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <sstream>

#include "support/digest.h"
#include "support/oracles.h"
#include "zeltbraidwerk/foundations/structures.h"

namespace {

using support::at;
using support::show;
using namespace structures;

template <typename T>
std::string text(const T& value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

TEST(Parameter, NumbersAreWrappedBySumsAlone) {
  Parameter p(7.0);
  EXPECT_EQ(p.get_numeric_value(), 7.0);
  p.add(0.0);
  EXPECT_DOUBLE_EQ(p.value, 7.0 - 6.283185307179586);
  Parameter q(1.0);
  q += Parameter(-7.0);
  EXPECT_EQ(q.value, -6.0);
  EXPECT_EQ(Parameter(7.0).flip_sign().value, -7.0);
  EXPECT_EQ(text(Parameter()), "0");
  EXPECT_EQ(text(Parameter(1.5707963267948966)), "1.5708");
}

TEST(Parameter, ExpressionsGrowAtTheFront) {
  Parameter p("a");
  p.add(1.0);
  EXPECT_EQ(p.expression, "+ 1.000000 a");
  p += Parameter("b");
  EXPECT_EQ(text(p), "+ b + 1.000000 a");
  Parameter q(1.5);
  q.add("x");
  EXPECT_EQ(q, Parameter("+ 1.500000 x"));

  EXPECT_EQ(Parameter("x").flip_sign().expression, "UMINUS x");
  EXPECT_EQ(Parameter("x").flip_sign().flip_sign(), Parameter("x"));
  EXPECT_EQ(Parameter("+ 1 UMINUS x").flip_sign().expression, "UMINUS + 1 UMINUS x");
  EXPECT_THAT(
      [] { (void)Parameter("x").get_numeric_value(); },
      testing::ThrowsMessage<std::logic_error>("Can't get numeric value of an abstract parameter"));
}

TEST(Gate, Texts) {
  EXPECT_EQ(Gate::CNOT(0, 1).to_string(), "CNOT [0 1 ]");
  EXPECT_EQ(text(std::vector{Gate::CZ(4, 3), Gate::H(2), Gate::RXP(1), Gate::S(2)}),
            "CSIGN [4 3 ]\nH [2 ]\nRX [1 ]1.5708 \nRZ [2 ]1.5708 (diag)\n");
  EXPECT_EQ(text(Gate("XX", {0, 1, 2}, {Parameter(0.5), Parameter(3.0)}, false)),
            "XX [0 1 2 ]0.5 ");
  EXPECT_EQ(text(Gate("PH", {0}, {Parameter("t")}, true)), "PH [0 ]t (diag)");
  EXPECT_EQ(text(Gate("Z", {0}, true)), "Z [0 ](diag)");
  EXPECT_EQ(text(std::vector<Gate>{}), "");
}

TEST(CnotCircuit, SimulatesAsRowAdditionsInTimeOrder) {
  EXPECT_EQ(CnotCircuit().get_number_of_qubits(), 1);
  EXPECT_EQ(CnotCircuit(0).Simulate(), BoolMatrix{});
  EXPECT_EQ(show(CnotCircuit(2, {{0, 1}}).Simulate()), "10 11");
  CnotCircuit circuit(3);
  circuit.addGate(0, 1);
  circuit.addGate(1, 2);
  EXPECT_EQ(show(circuit.Simulate()), "100 110 111");
  circuit.insertGate(2, 0, 0);
  circuit.insertGate(0, 2, 3);
  EXPECT_EQ(show(circuit.getGates()), "(2,0)(0,1)(1,2)(0,2)");
  circuit.reverse();
  EXPECT_EQ(show(circuit.gates), "(0,2)(1,2)(0,1)(2,0)");
  EXPECT_EQ(text(circuit.to_circuit()), "CNOT [0 2 ]\nCNOT [1 2 ]\nCNOT [0 1 ]\nCNOT [2 0 ]\n");
  EXPECT_EQ(text(CnotCircuit(3, {{2, 0}})),
            "CnotCircuit sur 3 qubits constitué des portes : \nCNOT 2 0\n");

  support::Rng rng(31);
  CnotCircuit large = support::random_cnots(70, 500, rng);
  const BoolMatrix forward = large.Simulate();
  EXPECT_EQ(forward, support::operator_of(large));
  large.reverse();
  EXPECT_EQ(support::replayed(large, forward), support::identity(70));
}

/// Layers of gates, filled as soon as possible.
int layered_depth(const CnotCircuit& circuit) {
  std::vector<std::vector<int>> layers;
  for (const auto& [a, b] : circuit.gates) {
    std::size_t slot = layers.size();
    for (; slot > 0; --slot) {
      const auto& busy = layers[slot - 1];
      if (std::count(busy.begin(), busy.end(), a) + std::count(busy.begin(), busy.end(), b)) break;
    }
    if (slot == layers.size()) layers.emplace_back();
    layers[slot].insert(layers[slot].end(), {a, b});
  }
  return static_cast<int>(layers.size());
}

TEST(CnotCircuit, Depth) {
  EXPECT_EQ(CnotCircuit(3).depth(), 0);
  EXPECT_EQ(CnotCircuit(4, {{0, 1}, {2, 3}}).depth(), 1);
  EXPECT_EQ(CnotCircuit(4, {{0, 1}, {2, 3}, {1, 2}}).depth(), 2);
  support::Rng rng(32);
  for (const int n : {2, 3, 10, 40}) {
    const CnotCircuit circuit = support::random_cnots(n, 100, rng);
    EXPECT_EQ(circuit.depth(), layered_depth(circuit));
    testing::internal::CaptureStdout();
    EXPECT_EQ(cnot_depth(circuit.to_circuit()), circuit.depth());
    testing::internal::GetCapturedStdout();
  }
}

TEST(CnotCircuit, CnotDepthWritesAndLooksAtCnotsAlone) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(cnot_depth({}), 0);
  EXPECT_EQ(cnot_depth(
                {Gate::CNOT(0, 1), Gate::H(3), Gate::CZ(0, 1), Gate("CNOT", {}), Gate::CNOT(1, 2)}),
            2);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Nbqbits: 0\n"
            "CNOT [0 1 ]\nH [3 ]\nCSIGN [0 1 ]\nCNOT []\nCNOT [1 2 ]\nNbqbits: 4\n");
}

TEST(CnotCircuit, ParitiesWorkedExample) {
  CnotCircuit circuit(3, {{2, 0}, {0, 2}});
  BoolMatrix parities;
  std::vector<int> positions, wires, idx{0, 1, 2};
  circuit.get_parities(parities, 3, positions, wires, 2, idx);
  EXPECT_EQ(show(parities), "001 101");
  EXPECT_EQ(positions, (std::vector{0, 2}));
  circuit.get_parities(parities, 3, positions, wires, 0, idx);
  EXPECT_EQ(show(parities), "001 101 100 101");
  EXPECT_EQ(positions, (std::vector{0, 2, 0, 1}));
  EXPECT_EQ(wires, (std::vector{2, 2, 0, 0}));
}

TEST(CnotCircuit, ParitiesKeepTheirOrder) {
  support::Rng rng(33);
  support::Digest digest;
  for (const int n : {3, 8, 70}) {
    CnotCircuit circuit = support::random_cnots(n, 6 * n, rng);
    std::vector<int> idx(at(n));
    std::iota(idx.begin(), idx.end(), 0);
    std::shuffle(idx.begin(), idx.end(), rng);
    idx.resize(at((n + 1) / 2));
    BoolMatrix parities;
    std::vector<int> positions, wires;
    circuit.get_parities(parities, n, positions, wires, idx.back(), idx);
    digest.add(parities, positions, wires);
  }
  EXPECT_EQ(digest.text(), "1ee3bdf790843373");
}

TEST(Texts, ParitiesAndNetworks) {
  const std::map<BoolRow, int> parities{{{true, false, true}, 3}, {{false, true, true}, -1}};
  EXPECT_EQ(text(parities), "[011] : -1\n[101] : 3\n");
  EXPECT_EQ(text(std::tuple(parities, support::matrix({"10", "11"}))),
            "Parity network on 2 qubits with the following parities/phases : \n"
            "01 with phase -1\n10 with phase 3\n"
            " and final linear reversible operator \n1 0 \n1 1 \n\n");
  EXPECT_EQ(text(std::tuple(std::map<BoolRow, int>{}, BoolMatrix{})),
            "Parity network on 0 qubits with the following parities/phases : \n"
            " and final linear reversible operator \n\n");
  EXPECT_EQ(text(std::vector{1, 20}), "1 20 ");
}

}  // namespace
