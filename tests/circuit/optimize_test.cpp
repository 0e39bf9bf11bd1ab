#include "zeltbraidwerk/circuit/optimize.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "support/angles.h"
#include "support/circuits.h"
#include "support/dense.h"
#include "support/graphs.h"
#include "support/state_vector.h"
#include "zeltbraidwerk/search/internal/orders.h"

namespace {

using structures::Gate;
using support::AngleKind;
using support::at;
using support::turn;
using synthesis::CircuitCounts;
using synthesis::Objective;
using synthesis::OptimizeOptions;
using synthesis::OptimizeResult;
using synthesis::Outputs;
using testing::ElementsAre;
using Circuit = std::vector<Gate>;
constexpr double pi = std::numbers::pi;
const support::Values values{{"a", 0.83}, {"b", -1.91}};

CircuitCounts counts_of(const Circuit& circuit, int n) {
  CircuitCounts counts;
  std::vector<int> layers(at(n));
  for (const Gate& gate : circuit) {
    if (gate.qbits.size() == 2) {
      int& a = layers[at(gate.qbits[0])];
      int& b = layers[at(gate.qbits[1])];
      counts.depth = std::max(counts.depth, a = b = std::max(a, b) + 1);
      ++counts.two_qubit;
      continue;
    }
    if (gate.name == "I") continue;
    const auto is_multiple = [&](double of) {
      return !gate.params[0].is_abstract &&
             std::abs(std::remainder(gate.params[0].value, of * pi)) < 1e-9;
    };
    if (!gate.params.empty() && is_multiple(2)) continue;
    ++counts.one_qubit;
    if (gate.params.empty() || is_multiple(0.5)) continue;
    ++counts.rotations;
    counts.t += is_multiple(0.25);
  }
  return counts;
}

/// In the order of the fields.
std::vector<int> listed(const CircuitCounts& counts) {
  return {counts.two_qubit, counts.depth, counts.one_qubit, counts.rotations, counts.t};
}

std::pair<int, int> key(const CircuitCounts& counts, Objective objective) {
  return objective == Objective::depth ? std::pair(counts.depth, counts.two_qubit)
                                       : std::pair(counts.two_qubit, counts.depth);
}

bool is_generic(const Gate& gate) {
  return !gate.params.empty() && !gate.params[0].is_abstract &&
         std::abs(std::remainder(gate.params[0].value, pi / 4)) > 1e-9;
}

/// Without the gates on two qubits that are on no edge.
Circuit on_edges(Circuit circuit, const structures::Graph& device) {
  std::erase_if(circuit, [&](const Gate& gate) {
    return gate.qbits.size() == 2 && !device.are_neighbors(gate.qbits[0], gate.qbits[1]);
  });
  return circuit;
}

/// What is wrong with a result; nothing when it is right.
std::string fault(const Circuit& given, int n, const OptimizeOptions& options,
                  const OptimizeResult& result, std::mt19937& rng) {
  const Circuit wanted = support::with_values(given, values);
  const auto alike = [&](const Circuit& circuit, const std::vector<int>& wires) {
    return support::act_alike(wanted, support::with_values(circuit, values), n, wires, rng, 1e-6);
  };
  if (!alike(result.gates, result.permutation)) return "another operator";
  const auto has_phase = [&](const std::vector<synthesis::OptimizeStage>& stages) {
    std::mt19937 own_draws(1);
    const support::State state = support::random_state(n, own_draws);
    const Circuit last = support::with_values(stages.back().gates, values);
    const double phase = synthesis::global_phase(n, given, stages);
    return support::distance(
               support::after(last, n, state),
               support::moved(support::after(wanted, n, state), n, stages.back().permutation),
               std::polar(1.0, phase)) < 1e-6;
  };
  if (!has_phase(result.stages)) return "another phase";
  for (const synthesis::OptimizedCircuit& circuit : result.front) {
    if (!has_phase(circuit.stages)) return "another operator of the front";
  }
  if (options.outputs == Outputs::in_place &&
      result.permutation != zelt::braidwerk::internal::in_order(n))
    return "not in place";
  const std::set<std::string> names{"CNOT", "CSIGN", "H",  "S",  "D-S", "X",
                                    "Y",    "Z",     "RX", "RY", "RZ"};
  for (const Gate& gate : result.gates) {
    if (!names.contains(gate.name)) return "the name " + gate.name;
    if (gate.qbits.size() == 2 && options.device != nullptr &&
        !options.device->are_neighbors(gate.qbits[0], gate.qbits[1])) {
      return "not on an edge: " + gate.to_string();
    }
  }
  const CircuitCounts before = counts_of(given, n);
  const CircuitCounts after = counts_of(result.gates, n);
  if (listed(result.before) != listed(before)) return "counts before";
  if (result.after.two_qubit != after.two_qubit || result.after.depth != after.depth ||
      result.count != after.two_qubit || result.depth != after.depth) {
    return "counts after";
  }
  if (key(after, options.objective) > key(before, options.objective)) return "larger";
  if (key(after, options.objective) == key(before, options.objective) &&
      result.after.one_qubit > before.one_qubit) {
    return "more gates on one qubit";
  }
  const bool by_numbers = !options.exact && std::ranges::any_of(given, is_generic);
  if ((!by_numbers || options.keep_rotations) && result.after.rotations > before.rotations) {
    return "more rotations";
  }
  if (!by_numbers && result.after.t > before.t) return "more T gates";
  if (options.keep_depth && after.depth > before.depth) return "more layers";
  for (const synthesis::OptimizeStage& stage : result.stages) {
    if (!by_numbers && !stage.steps.empty()) return "numbers";
    if (!alike(stage.gates, stage.permutation)) return "a stage is another operator";
  }
  if (!result.stages.empty() && result.stages.back().gates != result.gates) return "last stage";
  return "";
}

/// A product in GF(2)[x] of two polynomials with `terms` terms each.
Circuit product_of_polynomials(int terms) {
  Circuit gates;
  const auto t = [&](int q, double sign) {
    gates.push_back(support::turn("RZ", q, sign * std::numbers::pi / 4));
  };
  const auto phase_of_three = [&](int a, int b, int c) {
    for (const int q : {a, b, c}) t(q, 1);
    const std::array<std::array<int, 2>, 3> pairs{{{a, b}, {a, c}, {b, c}}};
    for (const auto& [p, q] : pairs) {
      gates.push_back(Gate::CNOT(p, q));
      t(q, -1);
      if (p == b) {
        gates.push_back(Gate::CNOT(a, q));
        t(q, 1);
        gates.push_back(Gate::CNOT(a, q));
      }
      gates.push_back(Gate::CNOT(p, q));
    }
  };
  for (int k = 0; k < terms; ++k) {
    for (int l = 0; l < terms; ++l) {
      const int target = 2 * terms + (k + l) % terms;
      gates.push_back(Gate::H(target));
      phase_of_three(k, terms + l, target);
      gates.push_back(Gate::H(target));
    }
  }
  return gates;
}

// Fewer gates often take more layers, which are not taken where none are to be added.
TEST(Optimize, KeepsTheDepth) {
  std::mt19937 rng(7);
  constexpr int n = 12;
  OptimizeOptions options;
  options.seed = 1;
  options.steps = 20'000;
  options.objective = Objective::depth;
  const Circuit given = optimize_circuit(n, product_of_polynomials(n / 3), options).gates;
  options.objective = Objective::count;
  EXPECT_GT(optimize_circuit(n, given, options).depth, counts_of(given, n).depth);
  options.keep_depth = true;
  const OptimizeResult result = optimize_circuit(n, given, options);
  EXPECT_EQ(fault(given, n, options, result, rng), "");
  EXPECT_LT(result.count, result.before.two_qubit);
}

TEST(Optimize, GivesASmallerCircuitOfTheSameOperator) {
  std::mt19937 rng(1);
  int taken_out = 0;
  int by_numbers = 0;
  for (int instance = 0; instance < 96; ++instance) {
    const int n = 1 + instance % 7;
    const AngleKind kind = instance % 3 == 0 ? AngleKind::numeric : AngleKind::mixed;
    const structures::Graph device = support::random_device(n, 20, rng);
    Circuit given = support::random_circuit(n, 8 * n + 10, kind, rng);
    OptimizeOptions options;
    if (instance % 4 == 0) {
      options.device = &device;
      given = on_edges(std::move(given), device);
    }
    options.objective = instance % 5 == 0 ? Objective::depth : Objective::count;
    options.outputs = instance % 2 == 0 ? Outputs::in_place : Outputs::anywhere;
    options.exact = instance % 6 == 4;
    options.keep_rotations = instance % 6 == 5;
    options.keep_depth = instance % 9 < 4;
    options.seed = static_cast<std::uint64_t>(instance);
    options.steps = std::array{0, 100, 4000}[at(instance % 11 % 3)];
    const OptimizeResult result = optimize_circuit(n, given, options);
    EXPECT_EQ(fault(given, n, options, result, rng), "") << instance << '\n' << given;
    taken_out += result.before.two_qubit - result.count;
    for (const auto& stage : result.stages) by_numbers += stage.steps.empty() ? 0 : 1;
  }
  EXPECT_GT(taken_out, 200);
  EXPECT_GT(by_numbers, 10);
}

// Efforts that reach every part of a round, the searches of inverse circuits as well; and several
// rounds with numbers, each of which may permute the outputs again.
TEST(Optimize, WholeRoundsKeepTheOperator) {
  std::mt19937 rng(4);
  int left = 0;
  for (int instance = 0; instance < 28; ++instance) {
    const int n = 3 + instance % 3;
    const bool exact = instance < 16;
    Circuit given =
        support::random_circuit(n, 12 * n, exact ? AngleKind::numeric : AngleKind::mixed, rng);
    for (int k = 0; k < 6 && !exact; ++k) {  // swaps, which go as outputs are permuted
      given.push_back(Gate::CNOT(k / 3 + k % 2, k / 3 + 1 - k % 2));
    }
    OptimizeOptions options;
    options.outputs = exact ? Outputs::in_place : Outputs::anywhere;
    options.objective = instance % 4 == 3 ? Objective::depth : Objective::count;
    options.seed = static_cast<std::uint64_t>(instance);
    options.steps = exact ? 13'000 : 40'000;
    const OptimizeResult result = optimize_circuit(n, given, options);
    EXPECT_EQ(fault(given, n, options, result, rng), "") << instance << '\n' << given;
    left += exact ? result.count : 0;
  }
  EXPECT_LE(left, 123);  // 125 without the searches of inverse circuits
}

// With a budget walks are tournaments, from the given circuit and from the best.
TEST(Optimize, WalksInTimeKeepTheOperator) {
  std::mt19937 rng(5);
  const structures::Graph device = support::random_device(6, 20, rng);
  for (int instance = 0; instance < 4; ++instance) {
    Circuit given = product_of_polynomials(2);
    OptimizeOptions options;
    if (instance == 3) {
      options.device = &device;
      given = on_edges(support::random_circuit(6, 80, AngleKind::numeric, rng), device);
    }
    options.objective = instance == 2 ? Objective::depth : Objective::count;
    options.outputs = instance == 1 ? Outputs::anywhere : Outputs::in_place;
    options.budget = 0.2;
    options.restarts = 1;
    const OptimizeResult result = optimize_circuit(6, given, options);
    EXPECT_EQ(fault(given, 6, options, result, rng), "") << instance;
    EXPECT_LT(result.count, result.before.two_qubit);
  }
}

TEST(Optimize, CountsTheSmallestCircuits) {
  EXPECT_TRUE(synthesis::optimize_circuit(0, {}).gates.empty());
  EXPECT_TRUE(synthesis::optimize_circuit(3, {}).gates.empty());
  const Gate t = turn("RZ", 0, pi / 4);
  const OptimizeResult one = synthesis::optimize_circuit(1, {t, Gate::H(0), Gate::H(0), t, t});
  EXPECT_THAT(listed(one.before), ElementsAre(0, 0, 5, 3, 3));
  EXPECT_THAT(listed(one.after), ElementsAre(0, 0, 1, 1, 1));
  EXPECT_THAT(one.permutation, ElementsAre(0));
  EXPECT_EQ(one.count, 0);
}

TEST(Optimize, OutputsAnywhereAreNeverLongerThanInPlace) {
  std::mt19937 rng(11);
  int fewer = 0;
  for (int instance = 0; instance < 12; ++instance) {
    const int n = 3 + instance % 3;
    Circuit given = support::random_circuit(n, 12 * n, AngleKind::numeric, rng);
    for (int k = 0; k < 6; ++k) {  // swaps, which go where outputs are anywhere
      given.push_back(Gate::CNOT(k / 3 + k % 2, k / 3 + 1 - k % 2));
    }
    OptimizeOptions options;
    options.seed = static_cast<std::uint64_t>(instance);
    options.exact = true;
    options.steps = instance % 2 == 0 ? 1'000 : 20'000;
    const int in_place = optimize_circuit(n, given, options).count;
    options.outputs = Outputs::anywhere;
    const OptimizeResult free = optimize_circuit(n, given, options);
    EXPECT_EQ(fault(given, n, options, free, rng), "") << instance << '\n' << given;
    EXPECT_LE(free.count, in_place) << instance;
    fewer += in_place - free.count;
  }
  EXPECT_GT(fewer, 0);
}

TEST(Optimize, ReadsGlobalGates) {
  const Circuit given{Gate("XX", {2, 0, 1}, {pi / 2, 3.0}, false), Gate("RX", {0}, {0.3}, false),
                      Gate("CZ", {0, 2}), Gate("XX", {1, 2}, {pi / 2, 2.0}, false)};
  OptimizeOptions options;
  options.steps = 500;
  const OptimizeResult result = synthesis::optimize_circuit(3, given, options);
  EXPECT_TRUE(support::unitary(result.gates, 3).is_multiple_of(support::unitary(given, 3)));
  EXPECT_LT(result.count, result.before.two_qubit);
  EXPECT_EQ(result.before.two_qubit, 5);
}

TEST(Optimize, LongCircuitsDoNotDependOnTheNumberOfThreads) {
  std::mt19937 rng(2);
  const Circuit given = support::random_circuit(10, 10'000, AngleKind::numeric, rng);
  OptimizeOptions options;
  options.steps = 60'000;
  const OptimizeResult one = optimize_circuit(10, given, options);
  EXPECT_EQ(fault(given, 10, options, one, rng), "");
  EXPECT_LT(one.count, one.before.two_qubit - 100);
  for (const int jobs : {2, 3}) {
    options.jobs = jobs;
    EXPECT_EQ(optimize_circuit(10, given, options).gates, one.gates) << jobs;
  }
  options.seed = 1;
  EXPECT_NE(optimize_circuit(10, given, options).gates, one.gates);
}

// Numbers serve five rotations and five gates by three gates or fewer, but by more rotations.
TEST(Optimize, ReplacesWindowsByNumbersUnlessAskedNotTo) {
  std::mt19937 rng(3);
  const Gate cnot = Gate::CNOT(0, 1);
  const Gate back = Gate::CNOT(1, 0);
  const Circuit given{turn("RZ", 0, 0.3), cnot, turn("RX", 0, 1.3), back, turn("RY", 0, 2.3), cnot,
                      turn("RY", 1, 3.3), back, turn("RZ", 0, 4.3), back};
  for (const bool exact : {false, true}) {
    for (const bool keep_rotations : {false, true}) {
      OptimizeOptions options;
      options.steps = 1000;
      options.exact = exact;
      options.keep_rotations = keep_rotations;
      const OptimizeResult result = optimize_circuit(2, given, options);
      EXPECT_EQ(fault(given, 2, options, result, rng), "");
      EXPECT_EQ(result.count <= 3, !exact && !keep_rotations) << result.count;
      EXPECT_EQ(result.after.rotations > 5, !exact && !keep_rotations) << result.after.rotations;
    }
  }
}

TEST(Optimize, RefusesWhatItCannotRead) {
  const structures::Graph line = support::line(3);
  const structures::Graph apart = support::graph(3, {{0, 1}});
  const structures::Graph small = support::line(2);
  const Gate cnot = Gate::CNOT(0, 1);
  const auto global = [](const structures::Parameter& angle) {
    return Gate("XX", {0, 1}, {angle}, false);
  };
  const struct {
    const char* text;
    Circuit gates;
    const structures::Graph* device = nullptr;
    int n = 3;
  } cases[] = {
      {"n: got -1, wanted at least 0", {}, nullptr, -1},
      {"gates: got SWAP [0 1 ] (gate 1), wanted Clifford", {cnot, Gate("SWAP", {0, 1})}},
      {"gates: got RZ [0 ] (gate 0), wanted an angle", {Gate("RZ", {0})}},
      {"gates: got CNOT [1 1 ] (gate 0), wanted qubits that differ", {Gate::CNOT(1, 1)}},
      {"gates: got H [3 ] (gate 0), wanted qubits below 3", {Gate::H(3)}},
      {"gates: got H [-1 ] (gate 0), wanted qubits below 3", {Gate::H(-1)}},
      {"gates: got H [] (gate 0), wanted gates on qubits", {Gate("H", {})}},
      {"gates: got H [0 1 ] (gate 0), wanted a gate on 1 qubits", {Gate("H", {0, 1})}},
      {"gates: got CNOT [0 ] (gate 0), wanted a gate on 2 qubits", {Gate("CNOT", {0})}},
      {"gates: got", {turn("RZ", 0, INFINITY)}},
      {"gates: got XX [0 1 ]0.3  (gate 0), wanted an XX", {global(0.3)}},
      {"gates: got XX [0 1 ]a  (gate 0), wanted an XX", {global({"a"})}},
      {"gates: got XX", {global(INFINITY)}},
      {"device", {cnot}, &apart},
      {"device", {cnot}, &small},
      {"gates: got one on qubits 0 and 2, wanted gates on edges of the device",
       {cnot, Gate::CNOT(0, 2)},
       &line},
  };
  OptimizeOptions options;
  for (const auto& each : cases) {
    options.device = each.device;
    EXPECT_THAT([&] { optimize_circuit(each.n, each.gates, options); },
                testing::ThrowsMessage<std::invalid_argument>(testing::StartsWith(each.text)));
  }
  OptimizeOptions open;
  open.outputs = Outputs::left_open;
  EXPECT_THROW(optimize_circuit(1, {}, open), std::invalid_argument);
}

}  // namespace
