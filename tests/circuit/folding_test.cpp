#include "zeltbraidwerk/circuit/internal/folding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <numbers>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/angles.h"
#include "support/circuits.h"
#include "support/dense.h"
#include "support/oracles.h"
#include "support/state_vector.h"
#include "zeltbraidwerk/search/internal/orders.h"

namespace {

using namespace zelt::braidwerk::internal;
using structures::Gate;
using structures::Parameter;
using support::AngleKind;
using Circuit = std::vector<Gate>;
constexpr double pi = std::numbers::pi;

constexpr auto rx = [](int q, const Parameter& angle) { return support::turn("RX", q, angle); };
constexpr auto ry = [](int q, const Parameter& angle) { return support::turn("RY", q, angle); };
constexpr auto rz = [](int q, const Parameter& angle) { return support::turn("RZ", q, angle); };

StepCircuit folded(const Circuit& circuit, int n) {
  StepCircuit steps = read_steps(n, circuit);
  fold(steps);
  return steps;
}

Circuit pairs_of(const Circuit& circuit) {
  Circuit pairs;
  for (const Gate& gate : circuit) {
    if (gate.qbits.size() == 2)
      pairs.push_back({gate.name == "CZ" ? "CSIGN" : gate.name, gate.qbits});
  }
  return pairs;
}

/// Rotations by no multiple of pi/2.
std::ptrdiff_t rotations_of(const StepCircuit& circuit) {
  return std::ranges::count_if(circuit.steps, [](const Step& s) { return !s.is_clifford(); });
}

bool has_rows_in_order(const StepCircuit& circuit) {
  int row = 0;
  for (const Step& step : circuit.steps) {
    if (!step.is_clifford() && step.row != row++) return false;
  }
  return row == static_cast<int>(circuit.angles.size());
}

TEST(Steps, ReadEveryGateAndWriteTheSameOperator) {
  std::vector<Gate> cases{Gate("CNOT", {2, 0}), Gate("CZ", {0, 2}), Gate("CSIGN", {1, 2}),
                          rx(1, pi / 2),        rx(1, -pi / 2),     ry(1, pi / 2),
                          ry(1, -5 * pi),       rz(1, 7 * pi / 2),  rx(1, 0.3),
                          ry(1, -0.3),          rz(1, 2.3),         support::turn("PH", 1, 0.4)};
  for (const char* name : {"H", "S", "D-S", "X", "Y", "Z", "I"}) cases.push_back(Gate(name, {1}));
  for (const Gate& gate : cases) {
    const Circuit written_back = written(read_steps(3, {gate}));
    EXPECT_TRUE(support::unitary({gate}, 3).is_multiple_of(support::unitary(written_back, 3)))
        << gate;
  }
  for (const std::vector<int>& qubits : {std::vector{2, 0}, {1, 0, 2}, {1}}) {
    for (int quarters = -1; quarters <= 4; ++quarters) {
      const Gate global("XX", qubits, {quarters * pi / 2}, false);
      const auto times = static_cast<std::size_t>((quarters + 4) % 4);
      const Circuit repeated(times, Gate("XX", qubits));
      EXPECT_TRUE(support::unitary(repeated, 3)
                      .is_multiple_of(support::unitary(written(read_steps(3, {global})), 3)))
          << global;
    }
  }
}

TEST(Steps, InvertedUndoAll) {
  std::mt19937 rng(1);
  for (int instance = 0; instance < 20; ++instance) {
    StepCircuit circuit = read_steps(4, support::random_circuit(4, 40, AngleKind::numeric, rng));
    const Circuit given = written(circuit);
    const auto rows = static_cast<int>(circuit.angles.size());
    circuit.steps = inverted(circuit.steps, rows);
    EXPECT_TRUE(has_rows_in_order(circuit));
    std::ranges::reverse(circuit.angles);
    EXPECT_TRUE(support::act_alike(support::inverse(given), written(circuit), 4, in_order(4), rng));
  }
}

TEST(Fold, KeepsTheOperatorAndHasNothingLeftToFold) {
  std::mt19937 rng(2);
  support::Values values{{"a", 0.83}, {"b", -1.91}};
  for (int k = 0; k < 100; ++k) values["a" + std::to_string(k)] = 0.1 + 0.37 * k;
  std::ptrdiff_t taken_out = 0;
  for (int instance = 0; instance < 150; ++instance) {
    const int n = 1 + instance % 6;
    const AngleKind kind = std::array{AngleKind::numeric, AngleKind::mixed,
                                      AngleKind::symbolic}[support::at(instance % 3)];
    const Circuit given = support::random_circuit(n, 10 * n + 20, kind, rng);
    StepCircuit circuit = read_steps(n, given);
    const std::ptrdiff_t before = rotations_of(circuit);
    fold(circuit);
    const Circuit once = written(circuit);
    ASSERT_TRUE(support::act_alike(support::with_values(given, values),
                                   support::with_values(once, values), n, in_order(n), rng));
    EXPECT_EQ(pairs_of(once), pairs_of(given));
    EXPECT_LE(rotations_of(circuit), before);
    taken_out += before - rotations_of(circuit);
    EXPECT_TRUE(has_rows_in_order(circuit));
    fold(circuit);
    EXPECT_EQ(written(circuit), once);
  }
  EXPECT_GT(taken_out, 300);
}

TEST(Fold, AddsAnglesBySignWhereStringsMeet) {
  const Gate h = Gate::H(0);
  const Gate s("S", {0}, true);
  const Gate s_dagger("D-S", {0}, true);
  const Gate x("X", {0});
  const Gate cnot = Gate::CNOT(0, 1);
  const struct {
    const char* what;
    Circuit given;
    Circuit wanted;
  } cases[] = {
      {"after H", {rz(0, 0.3), h, rx(0, 0.4)}, {rz(0, 0.7), h}},
      {"Y after H", {ry(0, 0.3), h, ry(0, 0.4)}, {ry(0, -0.1), h}},
      {"after S", {rx(0, 0.3), s, ry(0, 0.4)}, {rx(0, 0.7), s}},
      {"X after S", {ry(0, 0.3), s, rx(0, 0.4)}, {ry(0, -0.1), s}},
      {"after the inverse of S", {rx(0, 0.3), s_dagger, ry(0, 0.4)}, {rx(0, -0.1), s_dagger}},
      {"after X", {rz(0, 0.3), x, rz(0, 0.4)}, {rz(0, -0.1), x}},
      {"after CNOT",
       {rz(0, 0.3), rx(1, 0.1), cnot, rx(1, 0.5), rz(0, 0.4)},
       {rz(0, 0.7), rx(1, 0.6), cnot}},
      {"not where CNOT spreads them",
       {rx(0, 0.3), rz(1, 0.1), cnot, rz(1, 0.5), rx(0, 0.4)},
       {rx(0, 0.3), rz(1, 0.1), cnot, rz(1, 0.5), rx(0, 0.4)}},
      {"of one parity",
       {cnot, rz(1, 0.3), cnot, rz(0, 0.1), Gate::CNOT(1, 0), rz(0, 0.4)},
       {cnot, rz(1, 0.7), cnot, rz(0, 0.1), Gate::CNOT(1, 0)}},
      {"not past what anticommutes",
       {rz(0, 0.3), rx(0, 0.1), rz(0, 0.4)},
       {rz(0, 0.3), rx(0, 0.1), rz(0, 0.4)}},
      {"cancel", {rz(0, 0.3), rx(1, 0.5), x, rz(0, 0.3)}, {rx(1, 0.5), x}},
      {"a second pass, as two T gates are S",
       {rx(0, 0.2), rz(0, pi / 4), rz(0, pi / 4), ry(0, 0.3)},
       {rx(0, 0.5), s}},
      {"backward by pi/2",
       {rz(0, pi / 4), x, rz(0, 3 * pi / 4), rz(1, 0.1)},
       {s_dagger, x, rz(1, 0.1)}},
      {"symbols cancel", {rz(0, {"a"}), rz(0, {"UMINUS a"})}, {}},
      {"a symbol backward", {rz(0, {"a"}), x, rz(0, {"b"})}, {rz(0, {"+ a UMINUS b"}), x}},
      {"all digits", {rz(0, {"a"}), rz(0, 0.1234567891)}, {rz(0, {"+ a 0.1234567891"})}},
      {"factors", {rz(0, {"+ 2*a b"}), rz(0, {"+ -2*a 0.5*b"})}, {rz(0, {"1.5*b"})}},
  };
  for (const auto& [what, given, wanted] : cases) {
    const Circuit found = written(folded(given, 2));
    ASSERT_EQ(found.size(), wanted.size()) << what << '\n' << found;
    for (std::size_t k = 0; k < wanted.size(); ++k) {
      EXPECT_EQ(std::pair(found[k].name, found[k].qbits),
                std::pair(wanted[k].name, wanted[k].qbits))
          << what;
      if (wanted[k].params.empty()) continue;
      EXPECT_EQ(found[k].params[0].expression, wanted[k].params[0].expression) << what;
      EXPECT_NEAR(found[k].params[0].value, wanted[k].params[0].value, 1e-15) << what;
    }
  }
}

TEST(Fold, TellsHowFarAnglesWereRounded) {
  EXPECT_EQ(folded({rz(0, 0.3), rz(0, -0.3)}, 1).rounding, 0);
  EXPECT_NEAR(folded({rz(0, pi / 2 + 5e-10), rx(0, 1e-10)}, 1).rounding, 5e-10, 1e-15);
  EXPECT_NEAR(folded({rz(0, 0.3), rz(0, -0.3 - 4e-10)}, 1).rounding, 4e-10, 1e-15);
  const Gate global("XX", {0, 1}, {pi / 2 - 3e-10}, false);
  EXPECT_NEAR(folded({global}, 2).rounding, 3e-10, 1e-15);
  EXPECT_EQ(rotations_of(folded({rz(0, pi / 2 + 2e-9)}, 1)), 1);
}

}  // namespace
