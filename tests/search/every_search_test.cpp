// What every search promises: the same seed and steps give the same circuit, another seed or stream
// another one, and more steps never a worse one; a lower bound that is met ends it.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <map>
#include <numeric>
#include <span>
#include <string>
#include <vector>

#include "support/circuits.h"
#include "support/digest.h"
#include "support/gate_lists.h"
#include "support/graphs.h"
#include "support/rotations.h"
#include "support/tasks.h"
#include "zeltbraidwerk/circuit/internal/folding.h"
#include "zeltbraidwerk/circuit/search/internal/alternation.h"
#include "zeltbraidwerk/clifford/search/internal/search.h"
#include "zeltbraidwerk/clifford/search/internal/state_search.h"
#include "zeltbraidwerk/linear/search/internal/cnot_search.h"
#include "zeltbraidwerk/linear/search/internal/depth_search.h"
#include "zeltbraidwerk/linear/search/internal/device_search.h"
#include "zeltbraidwerk/pauli/search/internal/network_search.h"
#include "zeltbraidwerk/phase/search/internal/parity_search.h"

namespace {

using namespace zelt::braidwerk::internal;
using support::Digest;
using support::pulled_back;
using support::random_gates;

struct Outcome {
  CircuitSize size;
  Digest gates;
};

Outcome outcome_of(const std::vector<Gate>& gates, int n) {
  std::vector<std::pair<int, int>> ends;
  for (const Gate& gate : gates) ends.emplace_back(gate.a, gate.b);
  return {{static_cast<int>(gates.size()), depth_of(gates, n)}, Digest().add(ends)};
}

Outcome outcome_of(const structures::CnotCircuit& circuit) {
  return {{static_cast<int>(circuit.gates.size()), circuit.depth()}, Digest().add(circuit)};
}

using Run = std::function<Outcome(const Task&, const Effort&)>;

Run run_map(const BitMatrix& m) {
  return [m](const Task& task, const Effort& effort) {
    if (task.device != nullptr) {
      return outcome_of(search_cnot_on_device(m, task, effort).gates, m.rows());
    }
    if (!task.by_depth()) return outcome_of(search_cnot(m, task, effort).gates, m.rows());
    const auto front = search_shallow_cnot(m, task, effort);
    Outcome first = outcome_of(front[0].list.gates, m.rows());
    first.size.depth = front[0].depth;
    return first;
  };
}

Run run_operator(const PauliFrame& images) {
  return [images](const Task& task, const Effort& effort) {
    const auto found = search_clifford(images, task, effort);
    return Outcome{found.size, Digest().add(to_gates(found.gates))};
  };
}

/// Of the images of Z.
Run run_state(const PauliFrame& images) {
  std::vector<int> z(static_cast<std::size_t>(images.rows() / 2));
  std::iota(z.begin(), z.end(), images.rows() / 2);
  return [stabilisers = images.select(z)](const Task& task, const Effort& effort) {
    const auto found = search_state(stabilisers, task, effort);
    return Outcome{found.size, Digest().add(to_gates(found.gates))};
  };
}

/// Of a code with k logical qubits: with its logical operators, or any.
Run run_encoder(const PauliFrame& images, int k, bool any_logicals) {
  const int n = images.rows() / 2;
  std::vector<int> zeros(static_cast<std::size_t>(n - k));
  std::iota(zeros.begin(), zeros.end(), n + k);
  std::vector<int> logicals;
  for (int q = 0; q < (any_logicals ? 0 : 2 * k); ++q) logicals.push_back(q < k ? q : n + q - k);
  const Code code{images.select(zeros), images.select(logicals)};
  return [code](const Task& task, const Effort& effort) {
    const auto found = search_encoder(code, task, effort);
    return Outcome{found.size, Digest().add(to_gates(found.gates))};
  };
}

Run run_parities(const BitMatrix& parities) {
  return [parities](const Task& task, const Effort& effort) {
    structures::CnotCircuit circuit(parities.rows());
    std::vector<int> shown;
    for (const auto& [control, target, term] : search_parities(parities, task, effort).gates) {
      term < 0 ? circuit.addGate(control, target) : shown.push_back(term);
    }
    return outcome_of(circuit);
  };
}

Run run_rotations(const support::PauliRows& rows, int n, bool in_order) {
  return [list = support::named(rows, n), in_order](const Task& task, const Effort& effort) {
    const auto found = search_network(list, NetworkTask{task, in_order}, effort);
    return Outcome{found.size, Digest().add(found.gates)};
  };
}

/// Of rotations by any angle and Clifford gates, those on two qubits on edges.
StepCircuit circuit_on(const BitGraph& device, support::Rng& rng) {
  const int n = device.size();
  auto gates = support::random_circuit(n, 250, support::AngleKind::mixed, rng);
  std::erase_if(gates, [&](const structures::Gate& gate) {
    return gate.qbits.size() == 2 && !device.joined(gate.qbits[0], gate.qbits[1]);
  });
  StepCircuit circuit = read_steps(n, gates);
  fold(circuit);
  return circuit;
}

Run run_circuit(const StepCircuit& circuit, bool exact) {
  return [=](const Task& task, const Effort& effort) {
    const CircuitTask own{task, 1};
    const StagedCircuit found = exact ? search_exactly(circuit, own, effort)
                                      : search_alternating(circuit, false, own, effort);
    return Outcome{found.size, Digest().add(written(found.circuit))};
  };
}

/// A search of one problem, and how many steps to try it with.
struct Search {
  std::string name;
  Task task;
  std::uint64_t most_steps;
  Run run;
};

constexpr std::array open{Outputs::left_open};
constexpr std::array placed{Outputs::in_place};
constexpr std::array closed{Outputs::anywhere, Outputs::in_place};
constexpr std::array any{Outputs::left_open, Outputs::anywhere, Outputs::in_place};

/// Both objectives, on all pairs of wires and, if there is one, on a device.
void add(std::vector<Search>& all, const std::string& name, std::uint64_t most_steps,
         const Run& run, std::span<const Outputs> ends, const BitGraph* device) {
  for (const Outputs outputs : ends) {
    for (const Objective objective : {Objective::count, Objective::depth}) {
      for (const BitGraph* edges : {static_cast<const BitGraph*>(nullptr), device}) {
        all.push_back({name, {objective, outputs, 0, edges, 5, 2}, most_steps, run});
        if (device == nullptr) break;
      }
    }
  }
}

/// One problem of each family.
std::vector<Search> searches(const BitGraph& grid) {
  support::Rng rng(11);
  std::vector<Search> all;
  for (const int n : {9, 24}) {
    const BitMatrix m = BitMatrix::pack(support::random_invertible(n, rng), n, n);
    add(all, "map on " + std::to_string(n), 20'000, run_map(m), closed, n == 9 ? &grid : nullptr);
  }
  const PauliFrame images = pulled_back(random_gates(9, 200, nullptr, true, rng), 200, 9);
  add(all, "operator", 20'000, run_operator(images), closed, &grid);
  const PauliFrame wide = pulled_back(random_gates(18, 400, nullptr, true, rng), 400, 18);
  add(all, "state", 4000, run_state(wide), placed, nullptr);
  add(all, "state", 4000, run_state(images), closed, &grid);
  for (const int k : {1, 6}) {
    add(all, "encoder", 3000, run_encoder(wide, k, true), placed, nullptr);
    add(all, "encoder with logicals", 3000, run_encoder(wide, k, false), placed, nullptr);
  }
  const BitMatrix parities = BitMatrix::pack(support::random_matrix(9, 35, rng), 9, 35);
  add(all, "parities", 20'000, run_parities(parities), any, &grid);
  for (const bool in_order : {false, true}) {
    for (const int rows : {30, 320}) {  // long lists begin with relays
      support::PauliRows table = support::random_rows(rows, 5, rng);
      for (auto& row : table) row.resize(9);
      const Run run = run_rotations(table, 9, in_order);
      add(all, std::string("rotations ") + (in_order ? "in order" : "in any order"),
          rows == 30 ? 5000 : 10'000, run, open, rows == 30 ? &grid : nullptr);
    }
  }
  const StepCircuit circuit = circuit_on(grid, rng);
  add(all, "circuit", 8000, run_circuit(circuit, true), closed, &grid);
  add(all, "circuit by numbers", 8000, run_circuit(circuit, false), closed, &grid);
  return all;
}

/// Of few gates, so that bounds are met.
std::vector<Search> small_searches(unsigned seed, const BitGraph& line) {
  support::Rng rng(seed);
  const int n = line.size();
  const auto count = static_cast<int>(seed % 7);
  const BitMatrix m = support::map_of(random_gates(n, count, nullptr, false, rng), n);
  const PauliFrame images = pulled_back(random_gates(n, count, nullptr, true, rng), count, n);
  const BitMatrix parities =
      BitMatrix::pack(support::random_matrix(n, n / 2 + 1, rng), n, n / 2 + 1);
  support::PauliRows strings;
  for (int r = n; r < n + 1 + n / 2; ++r) strings.push_back(images.letters(r));
  std::vector<Search> all;
  constexpr std::uint64_t steps = 3000;
  add(all, "map", steps, run_map(m), closed, &line);
  add(all, "operator", steps, run_operator(images), closed, &line);
  add(all, "state", steps, run_state(images), closed, &line);
  add(all, "encoder", steps, run_encoder(images, n / 2, true), placed, nullptr);
  add(all, "parities", steps, run_parities(parities), closed, &line);
  add(all, "rotations", steps, run_rotations(strings, n, true), placed, &line);
  add(all, "rotations", steps, run_rotations(strings, n, false), open, &line);
  return all;
}

std::string shown(const Search& search) {
  return search.name + (search.task.by_depth() ? ", by depth" : "") +
         (search.task.device != nullptr ? ", on a device, outputs " : ", outputs ") +
         std::to_string(static_cast<int>(search.task.outputs));
}

TEST(EverySearch, RepeatsItselfAndIsNeverWorseWithMoreSteps) {
  const BitGraph grid{support::grid(3, 3)};
  std::map<std::string, int> gained;
  std::map<std::string, std::array<int, 2>> changed;
  for (const Search& search : searches(grid)) {
    SCOPED_TRACE(shown(search));
    const auto run = [&](Task task, std::uint64_t steps) {
      Effort effort;
      effort.steps = steps;
      return search.run(task, effort);
    };
    const auto key = [&](const Outcome& one) { return one.size.key(search.task.objective); };
    const Outcome first = run(search.task, 0);
    Outcome last = first;
    for (std::uint64_t steps = 1; steps < search.most_steps; steps += 1 + steps / 2) {
      Outcome next = run(search.task, steps);
      ASSERT_LE(key(next), key(last)) << steps;
      last = std::move(next);
    }
    gained[search.name] += key(last) < key(first) ? 1 : 0;
    const std::uint64_t some = search.most_steps / 5;
    const std::string gates = run(search.task, some).gates.text();
    EXPECT_EQ(run(search.task, some).gates.text(), gates);
    Task other = search.task;
    other.seed = 6;
    const std::string by_seed = run(other, some).gates.text();
    other = search.task;
    other.stream = 3;
    changed[search.name][0] += by_seed != gates ? 1 : 0;
    changed[search.name][1] += run(other, some).gates.text() != gates ? 1 : 0;
  }
  for (const auto& [name, times] : gained) {
    EXPECT_GT(times, 0) << name << " gains nothing";
    EXPECT_GT(changed[name][0], 0) << name << " does not ask for the seed";
    EXPECT_GT(changed[name][1], 0) << name << " does not ask for the stream";
  }
}

struct Heard {
  LowerBound best{1 << 30, 1 << 30};
  LowerBound bound;
};

Heard heard_of(const Search& search, std::uint64_t steps, bool past_bound) {
  Heard heard;
  Effort effort = support::steps(steps);
  effort.past_bound = past_bound;
  effort.on_better = [&](const SearchPoint& point) { heard.best = {point.count, point.depth}; };
  effort.on_bound = [&](const LowerBound& bound) { heard.bound = bound; };
  search.run(search.task, effort);
  return heard;
}

/// Wherever the bound is met, the search ends, and where it would have come to as few.
TEST(EverySearch, EndsAtItsBoundWithWhatItWouldHaveFound) {
  std::map<std::string, std::array<int, 2>> tally;  // met, all
  for (unsigned seed = 1; seed <= 20; ++seed) {
    const BitGraph line = support::path(static_cast<int>(2 + seed % 5));
    for (const Search& search : small_searches(seed, line)) {
      SCOPED_TRACE(shown(search) + ", seed " + std::to_string(seed));
      const Heard whole = heard_of(search, search.most_steps, true);
      const Heard ended = heard_of(search, search.most_steps, false);
      EXPECT_LE(ended.bound.count, whole.best.count);
      EXPECT_LE(ended.bound.depth, whole.best.depth);
      const auto first = [&](const LowerBound& b) {
        return search.task.by_depth() ? b.depth : b.count;
      };
      EXPECT_EQ(first(ended.best), first(whole.best));
      const bool met = first(ended.best) == first(ended.bound);
      tally[search.name][0] += met ? 1 : 0;
      ++tally[search.name][1];
      // With no end of steps it ends by itself, and finds nothing else than with enough of them.
      if (!met) continue;
      EXPECT_EQ(first(heard_of(search, ~std::uint64_t{0}, false).best), first(ended.best));
    }
  }
  for (const auto& [family, row] : tally) EXPECT_GT(2 * row[0], row[1]) << family;
}

}  // namespace
