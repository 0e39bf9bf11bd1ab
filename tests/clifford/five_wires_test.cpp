#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <random>
#include <set>
#include <utility>

#include "support/pauli.h"
#include "support/tasks.h"
#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/clifford/search/internal/circuit.h"
#include "zeltbraidwerk/clifford/search/internal/five_wires.h"
#include "zeltbraidwerk/clifford/search/internal/placed_table.h"
#include "zeltbraidwerk/clifford/search/internal/search.h"

namespace {

using namespace support;
using namespace zelt::braidwerk::internal;
using Circuit = std::vector<structures::Gate>;
using Draws = zelt::braidwerk::internal::Rng;

PauliFrame images_of(const Circuit& circuit) {
  PauliFrame images = identity_images(5);
  for (const structures::Gate& gate : circuit) images.apply(gate);
  return images;
}

FiveWireRows rows_of(const Circuit& circuit) {
  return FiveWireRows::of(OperatorRows(images_of(circuit)));
}

Circuit joined(Circuit circuit, const Circuit& more) {
  circuit.insert(circuit.end(), more.begin(), more.end());
  return circuit;
}

int fewest(const Circuit& circuit, Outputs outputs) {
  Draws draws(1, 1);
  const Effort unlimited;
  Meter meter(unlimited);
  FiveWireSearch search(OperatorRows(images_of(circuit)), outputs, draws, meter);
  const auto found = search.run();
  if (!found || found->count() != search.least()) return -1;
  const CliffordCircuit made = to_circuit(*found, images_of(circuit));
  if (!implements(to_gates(made.gates), made.wires, tableau_of(circuit, 5))) return -2;
  if (outputs == Outputs::in_place && !std::ranges::is_sorted(made.wires)) return -3;
  return search.least();
}

Circuit one_qubit_gates(std::mt19937& rng) {
  Circuit gates;
  for (int k = 0; k < 40; ++k) {
    const auto q = static_cast<int>(rng() % 5);
    gates.push_back(rng() % 2 == 0 ? structures::Gate::H(q) : structures::Gate::S(q));
  }
  return gates;
}

Circuit renamed(Circuit circuit, const std::array<int, 5>& names) {
  for (structures::Gate& gate : circuit) {
    for (int& q : gate.qbits) q = names[static_cast<std::size_t>(q)];
  }
  return circuit;
}

TEST(FiveWires, have_a_class_blind_to_one_qubit_gates_and_names) {
  std::mt19937 rng(1);
  ClassFinder class_of;
  std::array<int, 5> names{0, 1, 2, 3, 4};
  for (int round = 0; round < 300; ++round) {
    const Circuit circuit = random_clifford(5, round / 4, rng);
    std::ranges::shuffle(names, rng);
    const Circuit other =
        joined(joined(one_qubit_gates(rng), renamed(circuit, names)), one_qubit_gates(rng));
    ASSERT_EQ(class_of(rows_of(circuit)), class_of(rows_of(other))) << round;
  }
}

/// Breadth first over all operators that one-qubit gates after them do not tell apart.
TEST(FiveWires, know_the_distance_of_all_operators_of_few_gates) {
  const ClassTable& table = ClassTable::shared();
  ClassFinder class_of;
  using Set = std::set<std::array<std::uint16_t, 10>>;
  const auto key = [](const FiveWireRows& rows) {
    std::array<std::uint16_t, 10> sorted{};
    for (std::size_t i = 0; i < 10; i += 2) {
      const std::uint16_t x = rows.strings[i];
      const std::uint16_t z = rows.strings[i + 1];
      std::array<std::uint16_t, 3> of{x, z, static_cast<std::uint16_t>(x ^ z)};
      std::ranges::sort(of);
      sorted[i] = of[0];
      sorted[i + 1] = of[1];
    }
    return sorted;
  };
  Set seen{key(FiveWireRows::identity())};
  std::vector<FiveWireRows> level{FiveWireRows::identity()};
  for (int distance = 0; distance <= 3; ++distance) {
    std::vector<FiveWireRows> next;
    std::set<std::pair<std::uint64_t, std::uint16_t>> classes;
    for (const FiveWireRows& rows : level) {
      const OperatorClass found = class_of(rows);
      classes.emplace(found.low, found.high);
      ASSERT_EQ(table.distance(found), distance);
      if (distance == 3) continue;
      for (const Gate& gate : five_wire_gates()) {
        const FiveWireRows child = rows_after(gate, rows);
        if (seen.insert(key(child)).second) next.push_back(child);
      }
    }
    level = std::move(next);
    const std::array<std::size_t, 4> all{1, 1, 4, 22};
    EXPECT_EQ(classes.size(), all[static_cast<std::size_t>(distance)]);
  }
}

TEST(FiveWires, take_as_many_gates_as_their_neighbours_and_inverses_tell) {
  std::mt19937 rng(2);
  for (int round = 0; round < 60; ++round) {
    const Circuit circuit = random_clifford(5, 10 + 5 * round, rng);
    for (const Outputs outputs : {Outputs::in_place, Outputs::anywhere}) {
      const int least = fewest(circuit, outputs);
      ASSERT_GE(least, 0) << round;
      ASSERT_EQ(fewest(inverted(circuit), outputs), least) << round;
      const Circuit more = joined(circuit, {structures::Gate::CNOT(round % 5, (round + 2) % 5)});
      ASSERT_LE(std::abs(fewest(more, outputs) - least), 1) << round;
    }
    ASSERT_LE(fewest(circuit, Outputs::anywhere), fewest(circuit, Outputs::in_place));
  }
}

/// A fifth wire does not help: proven here alone, on these operators.
TEST(FiveWires, agree_with_the_table_of_four) {
  const auto& table = PlacedTable<4>::shared();
  std::mt19937 rng(3);
  for (int round = 0; round < 40; ++round) {
    WindowRows rows = identity_rows_on(4);
    FiveWireRows wider = FiveWireRows::identity();
    for (int k = 0; k < 3 + round / 2; ++k) {
      const Gate gate = window_gates[rng() % window_gates.size()];
      rows = zelt::braidwerk::internal::rows_after(gate, rows);
      wider = zelt::braidwerk::internal::rows_after(gate, wider);
    }
    ClassFinder class_of;
    const int distance = ClassTable::shared().distance(class_of(wider));
    ASSERT_EQ(distance, std::min(table.distance(rows), int{ClassTable::beyond})) << round;
  }
}

TEST(FiveWires, take_twelve_gates_for_a_cycle_of_all_wires) {
  Circuit cycle;
  for (int q = 0; q < 4; ++q) {
    for (const auto& [a, b] : {std::pair{q, q + 1}, {q + 1, q}, {q, q + 1}}) {
      cycle.push_back(structures::Gate::CNOT(a, b));
    }
  }
  EXPECT_EQ(fewest(cycle, Outputs::in_place), 12);
  EXPECT_EQ(fewest(cycle, Outputs::anywhere), 0);
}

/// The search has them from the first step on, and then lowers the layers.
TEST(FiveWires, are_searched_to_a_proven_end) {
  std::mt19937 rng(4);
  for (int round = 0; round < 20; ++round) {
    const Circuit wanted = random_clifford(5, 200, rng);
    const PauliFrame images = images_of(wanted);
    for (const Outputs outputs : {Outputs::in_place, Outputs::anywhere}) {
      int bound = 0;
      const auto run = [&](std::uint64_t most) {
        Effort effort = steps(most);
        effort.on_bound = [&](const LowerBound& proven) { bound = proven.count; };
        const CliffordCircuit found = search_clifford(images, {.outputs = outputs, .seed = 3},
                                                      effort, OnFiveQubits::finds_fewest);
        EXPECT_TRUE(implements(to_gates(found.gates), found.wires, tableau_of(wanted, 5)));
        return found.size;
      };
      const CircuitSize none = run(0);
      const CircuitSize one = run(1);
      EXPECT_EQ(one.count, bound);
      EXPECT_LE(one.key(Objective::count), none.key(Objective::count));
      const CircuitSize all = run(1'000'000);
      EXPECT_EQ(all.count, bound);
      EXPECT_LE(all.depth, one.depth);
    }
  }
}

}  // namespace
