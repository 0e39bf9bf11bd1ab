// What the synthesize functions of all families promise alike.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/circuits.h"
#include "support/graphs.h"
#include "support/oracles.h"
#include "support/phases.h"
#include "support/rotations.h"
#include "support/state_vector.h"
#include "zeltbraidwerk/zeltbraidwerk.h"

namespace {

using structures::Gate;
using support::at;
using synthesis::Objective;
using synthesis::Outputs;
using synthesis::SynthesisOptions;
using synthesis::SynthesisResult;

struct Made {
  SynthesisResult result;
  std::vector<Gate> gates;
  std::string fault;  ///< of the circuit, by an oracle
};

struct Family {
  const char* name;
  int qubits;
  std::vector<std::string> (*methods)(bool on_device);
  std::vector<Outputs> outputs;
  std::vector<Outputs> outputs_on_device;  ///< none: no devices
  std::function<Made(const SynthesisOptions&)> make;
};

template <class Own>
Own with_own(const SynthesisOptions& options) {
  Own own;
  static_cast<SynthesisOptions&>(own) = options;
  return own;
}

/// Whether qubit q of the operator is on wire wires[q] after the circuit, signs included.
bool implements(const std::vector<Gate>& circuit, const std::vector<int>& wires,
                const structures::OperatorTableau& wanted) {
  const int n = wanted.nbqbits;
  const auto made = support::tableau_of(circuit, n);
  for (int q = 0; q < n; ++q) {
    for (const char letter : {'X', 'Z'}) {
      std::string string(at(n), 'I');
      string[at(q)] = letter;
      const auto [minus, image] = support::carried(string, wanted);
      std::string moved(at(n), 'I');
      for (int k = 0; k < n; ++k) moved[at(wires[at(k)])] = image[at(k)];
      if (support::carried(string, made) != support::SignedString{minus, moved}) return false;
    }
  }
  return true;
}

/// Whether the circuit makes of zeros what an operator makes of them.
bool prepares(const std::vector<Gate>& circuit, const structures::OperatorTableau& wanted) {
  const auto undo = support::tableau_of(circuit, wanted.nbqbits).inverse();
  for (int q = 0; q < wanted.nbqbits; ++q) {
    std::string z(at(wanted.nbqbits), 'I');
    z[at(q)] = 'Z';
    const auto [minus, image] = support::carried(z, wanted);
    const auto [other_minus, before] = support::carried(image, undo);
    if (before.find_first_of("XY") != std::string::npos || minus != other_minus) return false;
  }
  return true;
}

std::vector<Gate> random_clifford(int n, int gates, std::mt19937& rng) {
  std::vector<Gate> circuit;
  for (int k = 0; k < gates; ++k) {
    const int a = static_cast<int>(rng() % static_cast<unsigned>(n));
    const int b = static_cast<int>(rng() % static_cast<unsigned>(n));
    circuit.push_back(a != b ? Gate::CNOT(a, b) : rng() % 2 == 0 ? Gate::H(a) : Gate::S(a));
  }
  return circuit;
}

std::string fault_unless(bool right) {
  return right ? "" : "another operation";
}

Family linear() {
  support::Rng rng(1);
  const BoolMatrix m = support::random_invertible(9, rng);
  return {"linear",
          9,
          synthesis::linear_methods,
          {Outputs::in_place, Outputs::anywhere},
          {Outputs::in_place, Outputs::anywhere},
          [m](const SynthesisOptions& options) {
            auto found = synthesize_linear(m, with_own<synthesis::LinearOptions>(options));
            const bool right = support::implements_up_to(found.circuit, found.permutation, m);
            return Made{found, found.circuit.to_circuit(), fault_unless(right)};
          }};
}

Family phase() {
  support::Rng rng(2);
  const PhasePolynomial poly = support::random_polynomial(6, 14, rng);
  const std::vector ends{Outputs::in_place, Outputs::anywhere, Outputs::left_open};
  return {
      "phase", 6, synthesis::phase_methods, ends, ends, [poly](const SynthesisOptions& options) {
        auto found = synthesize_phase(poly, with_own<synthesis::PhaseOptions>(options));
        structures::Table table(6);
        for (int q = 0; q < 6; ++q) {
          for (int c = 0; c < 6; ++c) {
            const int wire = found.permutation[at(q)];
            table.bits[at(wire * 6 + c)] =
                found.linear_map.empty() ? c == q : found.linear_map[at(q)][at(c)];
          }
        }
        std::string fault = support::fault(poly, found.gates, table);
        for (std::size_t k = 0; k < found.gates.size() && fault.empty(); ++k) {
          if ((found.gates[k].name == "PH") != (found.terms[k] >= 0)) fault = "terms";
        }
        return Made{found, found.gates, fault};
      }};
}

Family pauli(bool in_order) {
  std::mt19937 rng(3);
  const support::PauliRows table = support::random_rows(10, 5, rng);
  return {
      in_order ? "pauli in order" : "pauli",
      5,
      synthesis::pauli_methods,
      {Outputs::in_place, Outputs::anywhere, Outputs::left_open},
      {Outputs::in_place, Outputs::left_open},
      [=](const SynthesisOptions& options) {
        const PauliRotationMap rotations = support::symbolic(table);
        std::vector<structures::Parameter> params;
        for (const auto& row : table) params.push_back(rotations.at(row));
        auto own = with_own<synthesis::PauliOptions>(options);
        own.in_order = in_order;
        auto found = synthesis::synthesize_pauli(5, table, params, own);
        const support::Unfolded unfolded = support::unfold(found.gates, 5);
        std::string fault = support::fault(rotations, unfolded);
        if (options.outputs != Outputs::left_open &&
            !implements(unfolded.clifford, found.permutation, structures::OperatorTableau(5))) {
          fault += " not closed";
        }
        std::vector<int> met;
        for (std::size_t k = 0; k < found.gates.size(); ++k) {
          if (found.rows[k] < 0) continue;
          const auto& angle = found.gates[k].params[0];
          const auto& given = params[at(found.rows[k])];
          if (angle != given && angle != given.flip_sign()) fault += " rows";
          for (const int earlier : met) {
            const auto row = at(found.rows[k]);
            if (in_order && !commute(table[row], table[at(earlier)]) && earlier > found.rows[k]) {
              fault += " out of order";
            }
          }
          met.push_back(found.rows[k]);
        }
        return Made{found, found.gates, fault};
      }};
}

structures::OperatorTableau some_operator() {
  std::mt19937 rng(4);
  return support::tableau_of(random_clifford(6, 70, rng), 6);
}

Family clifford() {
  return {"clifford",
          6,
          synthesis::clifford_methods,
          {Outputs::in_place, Outputs::anywhere},
          {Outputs::in_place, Outputs::anywhere},
          [wanted = some_operator()](const SynthesisOptions& options) {
            auto found = synthesize_clifford(wanted, with_own<synthesis::CliffordOptions>(options));
            return Made{found, found.gates,
                        fault_unless(implements(found.gates, found.permutation, wanted))};
          }};
}

Family state() {
  return {"state",
          6,
          synthesis::state_methods,
          {Outputs::in_place},
          {},
          [wanted = some_operator()](const SynthesisOptions& options) {
            auto found = synthesize_state(wanted, with_own<synthesis::StateOptions>(options));
            return Made{found, found.gates, fault_unless(prepares(found.gates, wanted))};
          }};
}

Family graph_state() {
  std::mt19937 rng(5);
  BoolMatrix graph(7, BoolRow(7));
  std::vector<Gate> edges;
  for (int i = 0; i < 7; ++i) edges.push_back(Gate::H(i));
  for (int i = 0; i < 7; ++i) {
    for (int j = 0; j <= i; ++j) {
      if (rng() % 2 == 0) continue;
      graph[at(i)][at(j)] = graph[at(j)][at(i)] = true;
      edges.push_back(i == j ? Gate::S(i) : Gate::CZ(i, j));
    }
  }
  return {"graph state",
          7,
          synthesis::graph_state_methods,
          {Outputs::in_place},
          {},
          [graph, wanted = support::tableau_of(edges, 7)](const SynthesisOptions& options) {
            auto found =
                synthesize_graph_state(graph, with_own<synthesis::GraphStateOptions>(options));
            return Made{found, found.gates, fault_unless(prepares(found.gates, wanted))};
          }};
}

/// Of a circuit on the edges of a line, with rotations that windows are replaced for by numbers.
Family optimize() {
  std::mt19937 rng(6);
  std::vector<Gate> given = support::random_circuit(5, 90, support::AngleKind::numeric, rng);
  std::erase_if(given, [](const Gate& gate) {
    return gate.qbits.size() == 2 && std::abs(gate.qbits[0] - gate.qbits[1]) != 1;
  });
  for (int q = 0; q < 5; ++q)
    given.emplace_back("RY", std::vector{q}, std::vector<structures::Parameter>{0.3}, false);
  const std::vector ends{Outputs::in_place, Outputs::anywhere};
  return {"optimize",
          5,
          [](bool) { return std::vector<std::string>{"auto", "search"}; },
          ends,
          ends,
          [given](const SynthesisOptions& options) {
            auto found = synthesis::optimize_circuit(5, given,
                                                     with_own<synthesis::OptimizeOptions>(options));
            std::mt19937 states(1);
            return Made{
                found, found.gates,
                fault_unless(support::act_alike(given, found.gates, 5, found.permutation, states))};
          }};
}

class EveryFamily : public testing::TestWithParam<Family> {};

INSTANTIATE_TEST_SUITE_P(Synthesize, EveryFamily,
                         testing::Values(linear(), phase(), pauli(true), pauli(false), clifford(),
                                         state(), graph_state(), optimize()),
                         [](const auto& family) {
                           std::string name = family.param.name;
                           std::ranges::replace(name, ' ', '_');
                           return name;
                         });

SynthesisOptions search(std::uint64_t steps) {
  SynthesisOptions options;
  options.method = "search";
  options.steps = steps;
  options.seed = 3;
  return options;
}

/// Of the gates on two qubits, placed as soon as their qubits are free.
std::pair<int, int> size_of(const std::vector<Gate>& gates, int n) {
  std::vector<int> levels(at(n));
  int count = 0;
  for (const Gate& gate : gates) {
    if (gate.qbits.size() != 2) continue;
    ++count;
    int& a = levels[at(gate.qbits[0])];
    int& b = levels[at(gate.qbits[1])];
    a = b = std::max(a, b) + 1;
  }
  return {count, levels.empty() ? 0 : *std::ranges::max_element(levels)};
}

TEST_P(EveryFamily, EveryMethodGivesARightCircuit) {
  const Family& family = GetParam();
  const structures::Graph line = support::line(family.qubits);
  for (const structures::Graph* device : {static_cast<const structures::Graph*>(nullptr), &line}) {
    for (const Outputs outputs : device ? family.outputs_on_device : family.outputs) {
      for (const std::string& method : family.methods(device != nullptr)) {
        SynthesisOptions options;
        options.method = method;
        options.outputs = outputs;
        options.device = device;
        options.seed = 5;
        if (method == "auto" || method == "search") options.steps = 300;
        for (const Objective objective : {Objective::count, Objective::depth}) {
          options.objective = objective;
          const Made made = family.make(options);
          const SynthesisResult& result = made.result;
          EXPECT_EQ(made.fault, "") << method;
          EXPECT_EQ(std::pair(result.count, result.depth), size_of(made.gates, family.qubits))
              << method;
          EXPECT_TRUE(method == "auto" || result.method == method);
          EXPECT_EQ(result.objective, objective);
          EXPECT_GE(result.count, result.least_count);
          EXPECT_GE(result.depth, result.least_depth);
          EXPECT_TRUE(device == nullptr || support::runs_on(*device, made.gates)) << method;
          if (outputs == Outputs::in_place) {
            EXPECT_TRUE(std::ranges::is_sorted(result.permutation)) << method;
          }
        }
      }
    }
  }
}

TEST_P(EveryFamily, TheSameSeedGivesTheSameCircuitOnAnyNumberOfThreads) {
  for (const char* method : {"auto", "search"}) {
    SynthesisOptions options = search(200);
    options.method = method;
    options.restarts = 6;
    const Made one = GetParam().make(options);
    options.jobs = 3;
    const Made three = GetParam().make(options);
    EXPECT_EQ(one.gates, three.gates);
    EXPECT_EQ(one.result.permutation, three.result.permutation);
    EXPECT_EQ(one.result.seed, 3);
  }
}

TEST_P(EveryFamily, TheTraceFallsToTheResult) {
  SynthesisOptions options = search(3000);
  std::vector<int> told;
  options.progress = [&](const synthesis::SearchPoint& point) { told.push_back(point.count); };
  const SynthesisResult result = GetParam().make(options).result;
  ASSERT_FALSE(result.trace.empty());
  EXPECT_EQ(result.trace.back().count, result.count);
  EXPECT_EQ(result.trace.back().depth, result.depth);
  EXPECT_TRUE(std::ranges::is_sorted(told, std::ranges::greater_equal()) || told.size() < 2);
  EXPECT_EQ(told.back(), result.count);
}

TEST_P(EveryFamily, OptionsThatDoNotFitAreRefused) {
  const structures::Graph pieces(GetParam().qubits);
  const structures::Graph small = support::line(2);
  const std::pair<const char*, std::function<void(SynthesisOptions&)>> wrong[] = {
      {"method", [](auto& o) { o.method = "nothing"; }},
      {"restarts", [](auto& o) { o.restarts = 0; }},
      {"budget", [](auto& o) { o.budget = -1; }},
      {"jobs", [](auto& o) { o.jobs = 2000; }},
      {"device", [&](auto& o) { o.device = &pieces; }},
      {"device", [&](auto& o) { o.device = &small; }},
  };
  for (const auto& [name, change] : wrong) {
    SynthesisOptions options = search(10);
    change(options);
    try {
      GetParam().make(options);
      ADD_FAILURE() << name;
    } catch (const std::invalid_argument& error) {
      EXPECT_TRUE(std::string(error.what()).starts_with(name)) << error.what();
    }
  }
}

TEST(Synthesize, OptionsOfOneFamilyAreChecked) {
  const BoolMatrix m = support::identity(3);
  const std::pair<const char*, std::function<void(synthesis::LinearOptions&)>> wrong[] = {
      {"section", [](auto& o) { o.section = 2; }},
      {"width",
       [](auto& o) {
         o.method = "greedy";
         o.width = 0;
       }},
      {"width, lookahead",
       [](auto& o) {
         o.method = "syndrome";
         o.width = 1000;
         o.lookahead = 50;
       }},
      {"reach",
       [](auto& o) {
         o.method = "search";
         o.outputs = Outputs::within_reach;
       }},
      {"outputs", [](auto& o) { o.outputs = Outputs::left_open; }},
      {"steps",
       [](auto& o) {
         o.method = "pmh";
         o.steps = 3;
       }},
  };
  for (const auto& [name, change] : wrong) {
    synthesis::LinearOptions options;
    change(options);
    try {
      synthesize_linear(m, options);
      ADD_FAILURE() << name;
    } catch (const std::invalid_argument& error) {
      EXPECT_TRUE(std::string(error.what()).starts_with(name)) << error.what();
    }
  }
  EXPECT_THROW(synthesis::synthesize_linear({{1, 1}, {1, 1}}), std::invalid_argument);
  EXPECT_THROW(synthesis::synthesize_linear({{1, 0}}), std::invalid_argument);
  EXPECT_THROW(synthesis::synthesize_pauli(2, {{1, 1}}, {}), std::invalid_argument);
  EXPECT_THROW(synthesis::synthesize_pauli(3, {{1, 1}}, {{"a"}}), std::invalid_argument);
  EXPECT_THROW(synthesis::synthesize_state({{1, 0}, {3, 0}}, {false, false}),
               std::invalid_argument);
  EXPECT_THROW(synthesis::synthesize_graph_state({{0, 1}, {0, 0}}), std::invalid_argument);
}

TEST(Synthesize, NothingGivesAnEmptyCircuit) {
  EXPECT_EQ(synthesis::synthesize_linear({}).count, 0);
  EXPECT_TRUE(synthesis::synthesize_phase({}).gates.empty());
  EXPECT_TRUE(synthesis::synthesize_pauli(2, {}, {}).gates.empty());
  EXPECT_TRUE(synthesis::synthesize_clifford(structures::OperatorTableau(0)).gates.empty());
  EXPECT_TRUE(synthesis::synthesize_graph_state({}).gates.empty());
}

// Outputs may be one edge away from their places; the front holds the result of the depth search.
TEST(Synthesize, LinearMapsWithinReachAndTheirFronts) {
  support::Rng rng(6);
  const BoolMatrix m = support::random_invertible(7, rng);
  const structures::Graph line = support::line(7);
  synthesis::LinearOptions options;
  options.method = "search";
  options.steps = 2000;
  options.device = &line;
  options.outputs = Outputs::within_reach;
  options.reach = 1;
  const auto near = synthesize_linear(m, options);
  EXPECT_TRUE(support::implements_up_to(near.circuit, near.permutation, m));
  for (int q = 0; q < 7; ++q) EXPECT_LE(std::abs(near.permutation[at(q)] - q), 1);

  options = {};
  options.method = "search";
  options.objective = Objective::depth;
  options.steps = 2000;
  options.restarts = 2;
  const auto shallow = synthesize_linear(m, options);
  ASSERT_FALSE(shallow.front.empty());
  EXPECT_EQ(shallow.front[0].circuit.depth(), shallow.depth);
  for (std::size_t k = 0; k < shallow.front.size(); ++k) {
    const auto& [circuit, permutation] = shallow.front[k];
    EXPECT_TRUE(support::implements_up_to(circuit, permutation, m));
    if (k == 0) continue;
    const auto& before = shallow.front[k - 1].circuit;
    EXPECT_LT(circuit.gates.size(), before.gates.size());
    EXPECT_GT(circuit.depth(), before.depth());
  }
}

// A budget ends the runs and the closing after them; the best so far comes back.
TEST(Synthesize, StopAndBudgetEndASearch) {
  support::Rng rng(7);
  const PhasePolynomial poly = support::random_polynomial(8, 40, rng);
  synthesis::PhaseOptions options;
  options.method = "gray";
  options.budget = 0.2;
  const auto cut = synthesize_phase(poly, options);
  EXPECT_LT(cut.seconds, 5);
  EXPECT_GT(cut.runs, 1);
  options.budget = std::nullopt;
  options.method = "search";
  options.steps = std::uint64_t{1} << 62;
  options.stop = [] { return true; };
  const auto stopped = synthesize_phase(poly, options);
  EXPECT_TRUE(stopped.stopped);
  EXPECT_GT(stopped.count, 0);
}

}  // namespace
