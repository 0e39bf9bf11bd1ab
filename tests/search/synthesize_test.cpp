// What the synthesize functions of all families promise alike.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/graphs.h"
#include "support/oracles.h"
#include "support/phases.h"
#include "support/rotations.h"
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
  return {in_order ? "pauli in order" : "pauli",
          5,
          synthesis::pauli_methods,
          {Outputs::in_place, Outputs::anywhere, Outputs::left_open},
          {Outputs::in_place, Outputs::left_open},
          [=](const SynthesisOptions& options) {
            const auto params = support::named(table, 5).params;
            auto own = with_own<synthesis::PauliOptions>(options);
            own.in_order = in_order;
            auto found = synthesis::synthesize_pauli(5, table, params, own);
            const support::Unfolded unfolded = support::unfold(found.gates, 5);
            std::string fault = support::fault(table, in_order, unfolded);
            if (options.outputs != Outputs::left_open &&
                !support::implements(unfolded.clifford, found.permutation,
                                     structures::OperatorTableau(5))) {
              fault += " not closed";
            }
            for (std::size_t k = 0; k < found.gates.size(); ++k) {
              if (found.rows[k] < 0) continue;
              const auto& angle = found.gates[k].params[0];
              const auto& given = params[at(found.rows[k])];
              if (angle != given && angle != given.flip_sign()) fault += " rows";
            }
            return Made{found, found.gates, fault};
          }};
}

structures::OperatorTableau some_operator() {
  std::mt19937 rng(4);
  return support::tableau_of(support::random_clifford(6, 70, rng), 6);
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
                        fault_unless(support::implements(found.gates, found.permutation, wanted))};
          }};
}

/// Of what an operator makes of zeros.
std::vector<support::SignedString> stabilisers_of(const structures::OperatorTableau& made) {
  const auto images = support::images(made);
  std::vector<support::SignedString> of_z;
  for (std::size_t k = 1; k < images.size(); k += 2) of_z.push_back(images[k]);
  return of_z;
}

Family state() {
  return {"state",
          6,
          synthesis::state_methods,
          {Outputs::in_place},
          {},
          [wanted = some_operator()](const SynthesisOptions& options) {
            auto found = synthesize_state(wanted, with_own<synthesis::StateOptions>(options));
            return Made{found, found.gates,
                        fault_unless(support::prepares(found.gates, stabilisers_of(wanted)))};
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
            return Made{found, found.gates,
                        fault_unless(support::prepares(found.gates, stabilisers_of(wanted)))};
          }};
}

class EveryFamily : public testing::TestWithParam<Family> {};

INSTANTIATE_TEST_SUITE_P(Synthesize, EveryFamily,
                         testing::Values(linear(), phase(), pauli(true), pauli(false), clifford(),
                                         state(), graph_state()),
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
          structures::CnotCircuit pairs(family.qubits);
          for (const Gate& gate : made.gates) {
            if (gate.qbits.size() == 2) pairs.addGate(gate.qbits[0], gate.qbits[1]);
          }
          EXPECT_EQ(result.count, std::ssize(pairs.gates)) << method;
          EXPECT_EQ(result.depth, pairs.depth()) << method;
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
  for (const std::string& method : GetParam().methods(false)) {
    SynthesisOptions options;
    options.method = method;
    options.seed = 3;
    const bool searches = method == "auto" || method == "search";
    if (searches) options.steps = 200;
    if (searches) options.restarts = 6;
    const Made one = GetParam().make(options);
    if (searches) options.jobs = 3;
    const Made three = GetParam().make(options);
    EXPECT_EQ(one.gates, three.gates) << method;
    EXPECT_EQ(one.result.permutation, three.result.permutation) << method;
    EXPECT_TRUE(!searches || one.result.seed == 3);
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

/// That the call is refused by an error that begins with the name of the option.
template <class Call>
void expect_refused(const std::string& name, Call&& call) {
  try {
    call();
    ADD_FAILURE() << name;
  } catch (const std::invalid_argument& error) {
    EXPECT_TRUE(std::string(error.what()).starts_with(name)) << error.what();
  }
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
    expect_refused(name, [&] { GetParam().make(options); });
  }
}

TEST(Synthesize, OptionsOfOneFamilyAreChecked) {
  const BoolMatrix m = support::identity(3);
  const auto linear_refuses = [&m](const char* name, const char* method, auto&& change) {
    synthesis::LinearOptions options;
    options.method = method;
    change(options);
    expect_refused(name, [&] { synthesize_linear(m, options); });
  };
  linear_refuses("section", "auto", [](auto& o) { o.section = 2; });
  linear_refuses("width", "greedy", [](auto& o) { o.width = 0; });
  linear_refuses("width, lookahead", "syndrome", [](auto& o) { o.width = 1000, o.lookahead = 50; });
  linear_refuses("reach", "search", [](auto& o) { o.outputs = Outputs::within_reach; });
  linear_refuses("outputs", "auto", [](auto& o) { o.outputs = Outputs::left_open; });
  linear_refuses("steps", "pmh", [](auto& o) { o.steps = 3; });
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

// Outputs may be one edge away from their places; the front begins with the result.
TEST(Synthesize, LinearMapsWithinReachAndTheirFronts) {
  support::Rng rng(6);
  const BoolMatrix m = support::random_invertible(7, rng);
  const structures::Graph line = support::line(7);
  auto options = with_own<synthesis::LinearOptions>(search(2000));
  options.device = &line;
  options.outputs = Outputs::within_reach;
  options.reach = 1;
  const auto near = synthesize_linear(m, options);
  EXPECT_TRUE(support::implements_up_to(near.circuit, near.permutation, m));
  for (int q = 0; q < 7; ++q) EXPECT_LE(std::abs(near.permutation[at(q)] - q), 1);

  options = with_own<synthesis::LinearOptions>(search(2000));
  options.objective = Objective::depth;
  const auto shallow = synthesize_linear(m, options);
  ASSERT_FALSE(shallow.front.empty());
  EXPECT_EQ(shallow.front[0].circuit, shallow.circuit);
  for (const auto& [circuit, permutation] : shallow.front) {
    EXPECT_TRUE(support::implements_up_to(circuit, permutation, m));
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
