#include "zeltbraidwerk/pauli/pauli_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numbers>
#include <sstream>

#include "support/dense.h"
#include "support/pauli.h"

namespace {

using structures::Gate;
using structures::Parameter;
using support::rows;
using support::text;

constexpr double quarter = std::numbers::pi / 2;

Gate turn(const std::string& name, double angle) {
  return Gate(name, {0}, {Parameter(angle)}, false);
}

TEST(PauliTable, ConjugationTablesAreThoseOfTheOperators) {
  const std::pair<const ConjugationTable&, Gate> one_qubit[] = {{H_CONJ, Gate::H(0)},
                                                                {RXP_CONJ, turn("RX", quarter)},
                                                                {RXM_CONJ, turn("RX", -quarter)},
                                                                {S_CONJ, turn("RZ", quarter)},
                                                                {SD_CONJ, turn("RZ", -quarter)},
                                                                {CNOT_CONJ, Gate::CNOT(0, 1)},
                                                                {CZ_CONJ, Gate::CZ(0, 1)}};
  for (const auto& [table, gate] : one_qubit) {
    const int n = static_cast<int>(gate.qbits.size());
    const auto u = support::unitary(gate, n);
    ASSERT_EQ(table.size(), n == 1 ? 4U : 16U);
    for (const auto& [key, entry] : table) {
      const auto& [negative, image] = entry;
      const auto letters = [n = n](int code) {
        return (n == 1 ? "" : std::string(1, "IXYZ"[code / 4])) + "IXYZ"[code % 4];
      };
      const auto wanted = support::pauli(letters(image)) * (negative ? -1.0 : 1.0);
      EXPECT_TRUE((u * support::pauli(letters(key)) * u.dagger()).near(wanted))
          << gate.to_string() << ' ' << letters(key);
    }
  }
}

TEST(PauliTable, GatesRewriteEveryRowAndFlipAngles) {
  PauliTable table = rows({"YX", "ZI", "XZ"});
  auto params = support::numbered_angles(3);
  params[1] = Parameter("theta");
  std::vector<Gate> circuit;
  for (const int nothing : {0, 3, 7}) bring_to_z(table, params, 0, nothing, circuit);
  EXPECT_TRUE(circuit.empty());
  bring_to_z(table, params, 0, 2, circuit);
  EXPECT_EQ(text(table), "ZX YI XZ");
  EXPECT_EQ(params[1].expression, "UMINUS theta");
  apply_cnot(table, params, 0, 1, circuit);
  EXPECT_EQ(text(table), "ZX YX YY");
  EXPECT_EQ(params[2].value, -3);
  bring_to_z(table, params, 1, 1, circuit);
  EXPECT_EQ(text(table), "ZZ YZ YY");
  EXPECT_EQ(params[2].value, 3);
  std::vector<Gate> wanted{Gate::RXP(0), Gate::CNOT(0, 1), Gate::H(1)};
  EXPECT_EQ(circuit, wanted);

  PauliTable again = rows({"YX", "ZI", "XZ"});
  auto new_params = support::numbered_angles(3);
  conjugate_table_with_circuit(circuit, again, new_params);
  EXPECT_EQ(again, table);
  table[0][0] = 4;
  EXPECT_THAT([&] { bring_to_z(table, params, 0, 1, circuit); },
              testing::ThrowsMessage<std::out_of_range>("map::at:  key not found"));
  EXPECT_THROW(apply_cnot(table, params, 1, 0, circuit), std::out_of_range);
}

TEST(PauliTable, OneRotationIsRewrittenByTheGateNamed) {
  const auto rewritten = [](Gate gate, const std::string& letters) {
    auto row = rows({letters})[0];
    Parameter param(1.0);
    conjugate_parity_with_gate(gate, row, param);
    return (param.value < 0 ? "-" : "+") + text(row);
  };
  EXPECT_EQ(rewritten(turn("RZ", quarter + 1e-6), "X"), "+Y");
  EXPECT_EQ(rewritten(turn("RZ", quarter + 1e-4), "X"), "-Y");
  EXPECT_EQ(rewritten(turn("RX", quarter), "Z"), "-Y");
  EXPECT_EQ(rewritten(turn("RX", 0.3), "Z"), "+Y");
  EXPECT_EQ(rewritten(Gate("CZ", {1, 0}), "YX"), "-XY");
  EXPECT_EQ(rewritten(Gate::CNOT(1, 0), "ZX"), "-YY");
  EXPECT_THROW(rewritten(Gate("RZ", {0}, {Parameter("a")}, true), "X"), std::logic_error);
  EXPECT_THAT([&] { rewritten(Gate("S", {0}), "X"); },
              testing::ThrowsMessage<std::runtime_error>("Uknown clifford gate: S"));
}

TEST(PauliTable, AnswersQuestionsAboutRows) {
  EXPECT_TRUE(commute({1, 1}, {3, 3}));
  EXPECT_FALSE(commute({1, 0}, {3, 0}));
  EXPECT_TRUE(commute({}, {1}));
  const PauliTable table = rows({"IIX", "XIZ", "III", "XII"});
  EXPECT_EQ(find_common_pauli(table, 0), 1);
  EXPECT_EQ(find_common_pauli(table, 1), -1);
  EXPECT_EQ(find_common_pauli(table, 2), -1);
  EXPECT_TRUE(lexico_vector({1, 2}, {1, 3}));
  EXPECT_FALSE(lexico_vector({1, 3}, {1, 2}));
}

TEST(PauliTable, OrderingsCarryTheAngles) {
  PauliTable table = rows({"XYZ", "IIZ", "XIZ", "ZII", "XIY"});
  auto params = support::numbered_angles(5);
  weight_sort(table, params);
  EXPECT_EQ(text(table), "IIZ ZII XIZ XIY XYZ");
  EXPECT_EQ(params[4].value, 1);
  sort_lexico(table, params);
  EXPECT_EQ(text(table), "ZII XYZ XIZ XIY IIZ");
  EXPECT_EQ(params[0].value, 4);

  const PauliTable sorted = table;
  params = support::numbered_angles(5);
  std::set<std::string> orders;
  for (int k = 0; k < 50; ++k) {
    shuffle(table, params);
    for (std::size_t r = 0; r < 5; ++r) {
      EXPECT_EQ(table[r], sorted[static_cast<std::size_t>(params[r].value - 1)]);
    }
    orders.insert(text(table));
  }
  EXPECT_GT(orders.size(), 20U);

  PauliTable appended = rows({"ZZ"});
  auto more = support::numbered_angles(1);
  PauliRotationMap map;
  for (const std::string letters : {"XZ", "X", "IZ"}) map[rows({letters})[0]] = Parameter(7);
  map[rows({"XZ"})[0]] = Parameter(8);
  build_table(map, appended, more);
  EXPECT_EQ(text(appended), "ZZ IZ X XZ");
  EXPECT_EQ(more[3].value, 8);
}

TEST(PauliTable, PrintsTables) {
  std::ostringstream out;
  out << rows({"XI", "YZ"}) << PauliTable{} << std::vector<unsigned char>{1, 200}
      << std::vector<unsigned int>{70000} << BoolRow{true, false} << BoolMatrix{{true}, {false}};
  EXPECT_EQ(out.str(), "X& Y& \\\\\nI& Z& \\\\\n1 200 70000 1 0 1 \n0 \n");
  BoolRow bits{true, false};
  bits ^= BoolRow{true, true, true};
  EXPECT_EQ(bits, (BoolRow{false, true}));
}

}  // namespace
