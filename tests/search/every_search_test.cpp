// What every search promises: the same seed and steps give the same circuit, another seed or stream
// another one, and more steps never a worse one.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <map>
#include <numeric>
#include <string>
#include <vector>

#include "support/circuits.h"
#include "support/digest.h"
#include "support/gate_lists.h"
#include "support/graphs.h"
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

/// A search of one problem, and how many steps to try it with.
struct Search {
  std::string name;
  Task task;
  std::uint64_t most_steps;
  std::function<Outcome(const Task&, const Effort&)> run;
};

/// One problem of each family, on all pairs of wires and on a device.
std::vector<Search> searches(const BitGraph& grid) {
  support::Rng rng(11);
  std::vector<Search> all;
  const auto add = [&](const std::string& name, std::uint64_t most_steps, auto run,
                       std::initializer_list<Outputs> ends, bool on_device = true) {
    for (const Outputs outputs : ends) {
      for (const Objective objective : {Objective::count, Objective::depth}) {
        for (const BitGraph* device : {static_cast<const BitGraph*>(nullptr), &grid}) {
          if (device != nullptr && !on_device) continue;
          const Task task{objective, outputs, 0, device, 5, 2};
          all.push_back({name, task, most_steps, run});
        }
      }
    }
  };
  const auto closed = {Outputs::anywhere, Outputs::in_place};
  const auto open = {Outputs::left_open, Outputs::anywhere, Outputs::in_place};
  for (const int n : {9, 24}) {
    const BitMatrix m = BitMatrix::pack(support::random_invertible(n, rng), n, n);
    const auto run = [m](const Task& task, const Effort& effort) {
      if (task.device != nullptr) {
        return outcome_of(search_cnot_on_device(m, task, effort).gates, m.rows());
      }
      if (!task.by_depth()) return outcome_of(search_cnot(m, task, effort).circuit);
      const auto front = search_shallow_cnot(m, task, effort);
      Outcome first = outcome_of(front[0].list.gates, m.rows());
      first.size.depth = front[0].depth;
      return first;
    };
    add("map on " + std::to_string(n), 20'000, run, closed, n == 9);
  }
  const PauliFrame images = pulled_back(random_gates(9, 200, nullptr, true, rng), 200, 9);
  const auto operators = [images](const Task& task, const Effort& effort) {
    const auto found = search_clifford(images, task, effort);
    return Outcome{{found.count, found.depth}, Digest().add(found.circuit.gates)};
  };
  add("operator", 20'000, operators, closed);
  const PauliFrame wide = pulled_back(random_gates(18, 400, nullptr, true, rng), 400, 18);
  std::vector<int> z(18);
  std::iota(z.begin(), z.end(), 18);
  const auto states = [stabilisers = wide.select(z)](const Task& task, const Effort& effort) {
    const auto found = search_state(stabilisers, task, effort);
    return Outcome{{found.count, found.depth}, Digest().add(found.gates)};
  };
  add("state", 4000, states, {Outputs::in_place}, false);
  const BitMatrix parities = BitMatrix::pack(support::random_matrix(9, 35, rng), 9, 35);
  const auto networks = [parities](const Task& task, const Effort& effort) {
    structures::CnotCircuit circuit(9);
    std::vector<int> shown;
    for (const auto& [control, target, term] : search_parities(parities, task, effort).steps) {
      term < 0 ? circuit.addGate(control, target) : shown.push_back(term);
    }
    return outcome_of(circuit);
  };
  add("parities", 20'000, networks, open);
  for (const bool in_order : {false, true}) {
    for (const int rows : {30, 320}) {  // long lists begin with relays
      Rotations list{PauliFrame(9, rows), {}};
      for (int r = 0; r < rows; ++r) {
        list.params.emplace_back("a" + std::to_string(r));
        for (int q = 0; q < 5; ++q) {
          list.frame.set_letter(r, q, static_cast<unsigned char>(rng() % 4));
        }
      }
      const auto rotations = [list, in_order](const Task& task, const Effort& effort) {
        const auto found = search_network(list, NetworkTask{task, in_order}, effort);
        return Outcome{{found.count, found.depth}, Digest().add(found.gates)};
      };
      add(std::string("rotations ") + (in_order ? "in order" : "in any order"),
          rows == 30 ? 5000 : 10'000, rotations, {Outputs::left_open}, rows == 30);
    }
  }
  auto gates = support::random_circuit(9, 250, support::AngleKind::mixed, rng);
  std::erase_if(gates, [&](const structures::Gate& gate) {
    return gate.qbits.size() == 2 && !grid.joined(gate.qbits[0], gate.qbits[1]);
  });
  StepCircuit folded = read_steps(9, gates);
  fold(folded);
  for (const bool exact : {true, false}) {
    const auto circuits = [folded, exact](const Task& task, const Effort& effort) {
      const CircuitTask own{task, 1};
      const StagedCircuit found = exact ? search_exactly(folded, own, effort)
                                        : search_alternating(folded, false, own, effort);
      return Outcome{found.size, Digest().add(written(found.circuit))};
    };
    add(exact ? "circuit" : "circuit by numbers", 8000, circuits, closed);
  }
  return all;
}

TEST(EverySearch, RepeatsItselfAndIsNeverWorseWithMoreSteps) {
  const BitGraph grid{support::grid(3, 3)};
  std::map<std::string, int> gained;
  std::map<std::string, std::array<int, 2>> changed;
  for (const Search& search : searches(grid)) {
    SCOPED_TRACE(search.name + (search.task.by_depth() ? ", by depth" : "") +
                 (search.task.device != nullptr ? ", on a device, outputs " : ", outputs ") +
                 std::to_string(static_cast<int>(search.task.outputs)));
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

}  // namespace
