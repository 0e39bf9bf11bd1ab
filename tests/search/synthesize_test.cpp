// What the synthesize functions of all families promise alike.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/circuits.h"
#include "support/graphs.h"
#include "support/oracles.h"
#include "support/phases.h"
#include "support/rotations.h"
#include "support/state_vector.h"
#include "support/tasks.h"
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

/// Runs a synthesis of one problem.
using Problem = std::function<Made(const SynthesisOptions&)>;

struct Family {
  const char* name;
  int qubits;  ///< of the problem that all methods are tried on
  std::vector<std::string> (*methods)(bool on_device);
  std::vector<Outputs> outputs;
  std::vector<Outputs> outputs_on_device;  ///< none: no devices
  std::function<Problem(int n, support::Rng& rng)> draw;

  Problem problem() const {
    support::Rng rng(1);
    return draw(qubits, rng);
  }
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

/// Each of the front is the map, with more layers and fewer gates than the one before.
bool is_front(const std::vector<synthesis::LinearCircuit>& front, const BoolMatrix& m) {
  for (std::size_t k = 0; k < front.size(); ++k) {
    const auto& [circuit, permutation] = front[k];
    if (!support::implements_up_to(circuit, permutation, m)) return false;
    if (k == 0) continue;
    const auto& before = front[k - 1].circuit;
    if (circuit.gates.size() >= before.gates.size()) return false;
    if (circuit.depth() <= before.depth()) return false;
  }
  return true;
}

Problem draw_linear(int n, support::Rng& rng) {
  return [m = support::random_invertible(n, rng)](const SynthesisOptions& options) {
    auto found = synthesize_linear(m, with_own<synthesis::LinearOptions>(options));
    const bool right = support::implements_up_to(found.circuit, found.permutation, m);
    return Made{found, found.circuit.to_circuit(), fault_unless(right && is_front(found.front, m))};
  };
}

Problem draw_phase(int n, support::Rng& rng) {
  const PhasePolynomial poly =
      n == 0 ? PhasePolynomial{}
             : support::random_polynomial(n, 1 + static_cast<int>(rng() % at(3 * n)), rng);
  return [=](const SynthesisOptions& options) {
    auto found = synthesize_phase(poly, with_own<synthesis::PhaseOptions>(options));
    structures::Table table(n);
    for (int q = 0; q < n; ++q) {
      for (int c = 0; c < n; ++c) {
        const int wire = found.permutation[at(q)];
        table.bits[at(wire * n + c)] =
            found.linear_map.empty() ? c == q : found.linear_map[at(q)][at(c)];
      }
    }
    std::string fault = support::fault(poly, found.gates, table);
    for (std::size_t k = 0; k < found.gates.size() && fault.empty(); ++k) {
      if ((found.gates[k].name == "PH") != (found.terms[k] >= 0)) fault = "terms";
    }
    return Made{found, found.gates, fault};
  };
}

/// Different strings, light and heavy ones.
support::PauliRows draw_strings(int n, support::Rng& rng) {
  support::PauliRows table;
  for (auto row : support::random_rows(static_cast<int>(rng() % 20) + 10, n, rng)) {
    const bool light = rng() % 2 == 0;
    for (auto& letter : row) letter = light && rng() % 3 != 0 ? 0 : letter;
    if (std::ranges::find(table, row) == table.end()) table.push_back(row);
  }
  return table;
}

/// CNOTs up and down for each string.
int ladder_count(const support::PauliRows& table) {
  int count = 0;
  for (const auto& row : table) {
    count += 2 * std::max(0, static_cast<int>(row.size() - std::ranges::count(row, 0)) - 1);
  }
  return count;
}

template <bool in_order>
Problem draw_pauli(int n, support::Rng& rng) {
  return [n, table = draw_strings(n, rng)](const SynthesisOptions& options) {
    const auto params = support::named(table, n).params;
    auto own = with_own<synthesis::PauliOptions>(options);
    own.in_order = in_order;
    auto found = synthesis::synthesize_pauli(n, table, params, own);
    const support::Unfolded unfolded = support::unfold(found.gates, n);
    std::string fault = support::fault(table, in_order, unfolded);
    if (options.outputs != Outputs::left_open &&
        !support::implements(unfolded.clifford, found.permutation,
                             structures::OperatorTableau(n))) {
      fault += " not closed";
    }
    for (std::size_t k = 0; k < found.gates.size(); ++k) {
      if (found.rows[k] < 0) continue;
      const auto& angle = found.gates[k].params[0];
      const auto& given = params[at(found.rows[k])];
      if (angle != given && angle != given.flip_sign()) fault += " rows";
    }
    if (options.method == "search" && options.objective == Objective::count &&
        options.device == nullptr && found.count > ladder_count(table)) {
      fault += " more gates than ladders";
    }
    return Made{found, found.gates, fault};
  };
}

structures::OperatorTableau draw_operator(int n, support::Rng& rng) {
  const int gates = n * (1 + static_cast<int>(rng() % 10));
  return support::tableau_of(support::random_clifford(n, gates, rng), n);
}

Problem draw_clifford(int n, support::Rng& rng) {
  return [wanted = draw_operator(n, rng)](const SynthesisOptions& options) {
    auto found = synthesize_clifford(wanted, with_own<synthesis::CliffordOptions>(options));
    return Made{found, found.gates,
                fault_unless(support::implements(found.gates, found.permutation, wanted))};
  };
}

/// Of what an operator makes of zeros.
std::vector<support::SignedString> stabilisers_of(const structures::OperatorTableau& made) {
  const auto images = support::images(made);
  std::vector<support::SignedString> of_z;
  for (std::size_t k = 1; k < images.size(); k += 2) of_z.push_back(images[k]);
  return of_z;
}

std::vector<support::SignedString> on_wires(std::vector<support::SignedString> strings,
                                            const std::vector<int>& wires) {
  for (auto& [negative, letters] : strings) {
    const std::string from = letters;
    for (std::size_t q = 0; q < wires.size(); ++q) letters[at(wires[q])] = from[q];
  }
  return strings;
}

Problem draw_state(int n, support::Rng& rng) {
  return [wanted = draw_operator(n, rng)](const SynthesisOptions& options) {
    auto found = synthesize_state(wanted, with_own<synthesis::StateOptions>(options));
    return Made{found, found.gates,
                fault_unless(support::prepares(
                    found.gates, on_wires(stabilisers_of(wanted), found.permutation)))};
  };
}

Problem draw_graph_state(int n, support::Rng& rng) {
  BoolMatrix graph(at(n), BoolRow(at(n)));
  std::vector<Gate> edges;
  const auto odds = 2 + rng() % 4;
  for (int i = 0; i < n; ++i) edges.push_back(Gate::H(i));
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j <= i; ++j) {
      if (rng() % odds != 0) continue;
      graph[at(i)][at(j)] = graph[at(j)][at(i)] = true;
      edges.push_back(i == j ? Gate::S(i) : Gate::CZ(i, j));
    }
  }
  return [graph, stabilisers = stabilisers_of(support::tableau_of(edges, n))](
             const SynthesisOptions& options) {
    auto found = synthesize_graph_state(graph, with_own<synthesis::GraphStateOptions>(options));
    return Made{
        found, found.gates,
        fault_unless(support::prepares(found.gates, on_wires(stabilisers, found.permutation)))};
  };
}

/// With rotations, generic ones as well, where a state vector can tell; of Clifford gates where
/// not.
Problem draw_circuit(int n, support::Rng& rng) {
  const bool small = n < 8;
  std::vector<Gate> given =
      n == 0  ? std::vector<Gate>{}
      : small ? support::random_circuit(n, 8 * n, support::AngleKind::numeric, rng)
              : support::random_clifford(n, 4 * n, rng);
  for (int q = 0; q < n && small; ++q) given.push_back({"RY", {q}, {0.3 + q}, false});
  return [=](const SynthesisOptions& options) {
    auto own = with_own<synthesis::OptimizeOptions>(options);
    own.route = options.device != nullptr;
    auto found = synthesis::optimize_circuit(n, given, own);
    support::Rng states(1);
    const bool right =
        small ? support::act_alike(given, found.gates, n, found.permutation, states)
              : support::implements(found.gates, found.permutation, support::tableau_of(given, n));
    return Made{found, found.gates, fault_unless(right)};
  };
}

std::vector<std::string> circuit_methods(bool) {
  return {"auto", "search"};
}

const std::vector placed{Outputs::in_place};
const std::vector closed{Outputs::in_place, Outputs::anywhere};
const std::vector all_outputs{Outputs::in_place, Outputs::anywhere, Outputs::left_open};
const std::vector pauli_on_device{Outputs::in_place, Outputs::left_open};

const Family families[] = {
    {"linear", 9, synthesis::linear_methods, closed, closed, draw_linear},
    {"phase", 6, synthesis::phase_methods, all_outputs, all_outputs, draw_phase},
    {"pauli in order", 5, synthesis::pauli_methods, all_outputs, pauli_on_device, draw_pauli<true>},
    {"pauli", 5, synthesis::pauli_methods, all_outputs, pauli_on_device, draw_pauli<false>},
    {"clifford", 6, synthesis::clifford_methods, closed, closed, draw_clifford},
    {"state", 6, synthesis::state_methods, placed, closed, draw_state},
    {"graph state", 7, synthesis::graph_state_methods, placed, closed, draw_graph_state},
    {"circuit", 5, circuit_methods, closed, closed, draw_circuit},
};

void PrintTo(const Family& family, std::ostream* out) {
  *out << family.name;
}

class EveryFamily : public testing::TestWithParam<Family> {};

INSTANTIATE_TEST_SUITE_P(Synthesize, EveryFamily, testing::ValuesIn(families),
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

void expect_right(const Made& made, const SynthesisOptions& options, int n) {
  const SynthesisResult& result = made.result;
  EXPECT_EQ(made.fault, "");
  structures::CnotCircuit pairs(n);
  for (const Gate& gate : made.gates) {
    if (gate.qbits.size() != 2) continue;
    pairs.addGate(gate.qbits[0], gate.qbits[1]);
    EXPECT_TRUE(options.device == nullptr ||
                options.device->are_neighbors(gate.qbits[0], gate.qbits[1]));
  }
  EXPECT_EQ(result.count, std::ssize(pairs.gates));
  EXPECT_EQ(result.depth, pairs.depth());
  EXPECT_TRUE(options.method == "auto" || result.method == options.method);
  EXPECT_EQ(result.objective, options.objective);
  EXPECT_GE(result.count, result.least_count);
  EXPECT_GE(result.depth, result.least_depth);
  if (options.outputs == Outputs::in_place) {
    EXPECT_TRUE(std::ranges::is_sorted(result.permutation));
  }
}

TEST_P(EveryFamily, EveryMethodGivesARightCircuit) {
  const Family& family = GetParam();
  const Problem make = family.problem();
  const structures::Graph line = support::line(family.qubits);
  for (const structures::Graph* device : {static_cast<const structures::Graph*>(nullptr), &line}) {
    for (const Outputs outputs : device ? family.outputs_on_device : family.outputs) {
      for (const std::string& method : family.methods(device != nullptr)) {
        SCOPED_TRACE(method);
        SynthesisOptions options;
        options.method = method;
        options.outputs = outputs;
        options.device = device;
        options.seed = 5;
        if (method == "auto" || method == "search") options.steps = 300;
        for (const Objective objective : {Objective::count, Objective::depth}) {
          options.objective = objective;
          expect_right(make(options), options, family.qubits);
        }
      }
    }
  }
}

TEST_P(EveryFamily, SearchesAreRightOnEverySizeAndDevice) {
  const Family& family = GetParam();
  support::Rng rng(9);
  const auto one_of = [&rng](const std::vector<Outputs>& all) { return all[rng() % all.size()]; };
  for (const int n : {0, 1, 2, 3, 4, 5, 6, 7, 9, 12, 17, 26, 33, 50, 65}) {
    for (int round = 0; round < (n < 10 ? 16 : n < 60 ? 4 : 2); ++round) {
      SCOPED_TRACE(std::to_string(n) + " qubits, round " + std::to_string(round));
      const Problem make = family.draw(n, rng);
      SynthesisOptions options = search(rng() % 4 == 0 ? 0 : rng() % (n < 30 ? 3000 : 60));
      options.seed = rng();
      options.objective = support::objective(round % 3 == 2);
      options.outputs = one_of(family.outputs);
      const structures::Graph device = support::random_device(n, rng() % 2 == 0 ? 0 : 10, rng);
      if (n > 0 && round % 2 == 1 && !family.outputs_on_device.empty()) {
        options.outputs = one_of(family.outputs_on_device);
        options.device = &device;
      }
      expect_right(make(options), options, n);
    }
  }
}

TEST_P(EveryFamily, TheSameSeedGivesTheSameCircuitOnAnyNumberOfThreads) {
  const Problem make = GetParam().problem();
  for (const std::string& method : GetParam().methods(false)) {
    SynthesisOptions options;
    options.method = method;
    options.seed = 3;
    const bool searches = method == "auto" || method == "search";
    if (searches) options.steps = 200;
    if (searches) options.restarts = 6;
    const Made one = make(options);
    if (searches) options.jobs = 3;
    const Made three = make(options);
    EXPECT_EQ(one.gates, three.gates) << method;
    EXPECT_EQ(one.result.permutation, three.result.permutation) << method;
    EXPECT_TRUE(!searches || one.result.seed == 3);
  }
}

// Also under ThreadSanitizer: calls side by side, each with threads of its own, that share tables
// which nobody has built yet.
TEST_P(EveryFamily, CallsOnSeveralThreadsDoNotMeet) {
  const Problem make = GetParam().problem();
  const structures::Graph line = support::line(GetParam().qubits);
  const auto call = [&](int jobs, bool on_device, Objective objective, int& told) {
    SynthesisOptions options = search(150);
    options.restarts = 3;
    options.jobs = jobs;
    options.objective = objective;
    if (on_device && !GetParam().outputs_on_device.empty()) options.device = &line;
    options.progress = [&told](const synthesis::SearchPoint&) { ++told; };
    options.stop = [] { return false; };
    return make(options);
  };
  for (const Objective objective : {Objective::count, Objective::depth}) {
    std::vector<Made> made(4);
    std::vector<int> told(4);
    {
      std::vector<std::jthread> callers;
      for (int k = 0; k < 4; ++k) {
        callers.emplace_back(
            [&, k] { made[at(k)] = call(k < 2 ? 2 : 4, k % 2 == 1, objective, told[at(k)]); });
      }
    }
    for (int k = 0; k < 4; ++k) {
      int alone = 0;
      const Made one = call(1, k % 2 == 1, objective, alone);
      EXPECT_EQ(one.gates, made[at(k)].gates);
      EXPECT_EQ(one.result.runs, made[at(k)].result.runs);
      EXPECT_GT(told[at(k)], 0);
    }
  }
}

/// That the call is refused by an error that begins with the name of the option.
template <class Call>
void expect_refused(const std::string& name, Call&& call) {
  EXPECT_THAT(call, testing::ThrowsMessage<std::invalid_argument>(testing::StartsWith(name)));
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
    expect_refused(name, [&] { GetParam().problem()(options); });
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
}

}  // namespace
