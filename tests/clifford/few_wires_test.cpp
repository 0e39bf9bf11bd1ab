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
#include "zeltbraidwerk/clifford/search/internal/class_sketch.h"
#include "zeltbraidwerk/clifford/search/internal/few_wires.h"
#include "zeltbraidwerk/clifford/search/internal/operator_table.h"
#include "zeltbraidwerk/clifford/search/internal/placed_table.h"
#include "zeltbraidwerk/clifford/search/internal/search.h"

namespace {

using namespace support;
using namespace zelt::braidwerk::internal;
using Circuit = std::vector<structures::Gate>;
using Draws = zelt::braidwerk::internal::Rng;

PauliFrame images_of(const Circuit& circuit, int wires) {
  PauliFrame images = identity_images(wires);
  for (const structures::Gate& gate : circuit) images.apply(gate);
  return images;
}

template <int wires>
FewWireRows<wires> rows_of(const Circuit& circuit) {
  return FewWireRows<wires>::of(OperatorRows(images_of(circuit, wires)));
}

Circuit joined(Circuit circuit, const Circuit& more) {
  circuit.insert(circuit.end(), more.begin(), more.end());
  return circuit;
}

struct Fewest {
  int bound;
  int count;  ///< -1: none found, less: one that is wrong
};

/// In calls of so many tries each, until there is a circuit or they are `calls`.
template <int wires>
Fewest search_for_fewest(const Circuit& circuit, Outputs outputs, std::uint64_t tries, int calls) {
  Draws draws(1, 1);
  const PauliFrame images = images_of(circuit, wires);
  FewWireSearch<wires> search(OperatorRows(images), outputs, draws);
  std::optional<GateList> found;
  for (int k = 1; k <= calls && !found; ++k) {
    found = search.run({}, tries * static_cast<std::uint64_t>(k));
  }
  if (!found) return {search.least(), -1};
  const CliffordCircuit made = to_circuit(*found, images);
  if (!implements(to_gates(made.gates), made.wires, tableau_of(circuit, wires))) return {0, -2};
  if (outputs == Outputs::in_place && !std::ranges::is_sorted(made.wires)) return {0, -3};
  return {search.least(), found->count()};
}

template <int wires = 5>
int fewest(const Circuit& circuit, Outputs outputs) {
  const Fewest found = search_for_fewest<wires>(circuit, outputs, 4'000'000, 1);
  return found.bound == found.count ? found.count : -1;
}

template <int wires>
Circuit one_qubit_gates(std::mt19937& rng) {
  Circuit gates;
  for (int k = 0; k < 40; ++k) {
    const auto q = static_cast<int>(rng() % wires);
    gates.push_back(rng() % 2 == 0 ? structures::Gate::H(q) : structures::Gate::S(q));
  }
  return gates;
}

template <std::size_t wires>
Circuit renamed(Circuit circuit, const std::array<int, wires>& names) {
  for (structures::Gate& gate : circuit) {
    for (int& q : gate.qbits) q = names[static_cast<std::size_t>(q)];
  }
  return circuit;
}

template <int wires>
void expect_classes_blind_to_one_qubit_gates_and_names() {
  std::mt19937 rng(1);
  ClassFinder<wires> class_of;
  std::array<int, wires> names{};
  std::iota(names.begin(), names.end(), 0);
  for (int round = 0; round < 300; ++round) {
    const Circuit circuit = random_clifford(wires, round / 4, rng);
    std::ranges::shuffle(names, rng);
    const Circuit other = joined(joined(one_qubit_gates<wires>(rng), renamed(circuit, names)),
                                 one_qubit_gates<wires>(rng));
    const auto rows = rows_of<wires>(circuit);
    const auto other_rows = rows_of<wires>(other);
    ASSERT_EQ(class_of(rows), class_of(other_rows)) << round;
    ASSERT_EQ(ClassSketch<wires>(rows).own(), ClassSketch<wires>(other_rows).own()) << round;
    int moves = 0;
    ClassSketch<wires>(rows).each([&](std::size_t move, std::uint64_t sketch) {
      const auto after = rows.after(FewWireRows<wires>::gates()[move]);
      ASSERT_EQ(sketch, ClassSketch<wires>(after).own()) << round;
      ++moves;
    });
    ASSERT_EQ(moves, int{FewWireRows<wires>::moves});
    ClassSketch<wires>(rows).each_counts([&](std::size_t move, const auto& counts) {
      const ClassSketch<wires> ordered(
          rows.after(FewWireRows<wires>::gates()[move]).reordered(names));
      ASSERT_EQ(counts.number(names), ordered.own()) << round;
      ASSERT_EQ(counts.number_of_all(), ordered.own_of_all()) << round;
    });
  }
}

TEST(FewWires, have_a_class_blind_to_one_qubit_gates_and_names) {
  expect_classes_blind_to_one_qubit_gates_and_names<4>();
  expect_classes_blind_to_one_qubit_gates_and_names<5>();
  expect_classes_blind_to_one_qubit_gates_and_names<6>();
}

/// The same for all operators that one-qubit gates after them, with every output in its place, do
/// not tell apart.
template <int wires>
auto key(const FewWireRows<wires>& rows) {
  auto sorted = rows.strings;
  for (std::size_t i = 0; i < sorted.size(); i += 2) {
    const std::uint16_t x = rows.strings[i];
    const std::uint16_t z = rows.strings[i + 1];
    std::array<std::uint16_t, 3> of{x, z, static_cast<std::uint16_t>(x ^ z)};
    std::ranges::sort(of);
    sorted[i] = of[0];
    sorted[i + 1] = of[1];
  }
  return sorted;
}

/// Calls visit(rows, distance) for one operator of each key, breadth first.
template <int wires, class F>
void each_operator(int most_gates, F&& visit) {
  using Rows = FewWireRows<wires>;
  std::set<std::array<std::uint16_t, std::size_t{2 * wires}>> seen{key(Rows::identity())};
  std::vector<Rows> level{Rows::identity()};
  for (int distance = 0; !level.empty(); ++distance) {
    std::vector<Rows> next;
    for (const Rows& rows : level) {
      visit(rows, distance);
      if (distance == most_gates) continue;
      for (const Gate& gate : Rows::gates()) {
        const Rows child = rows.after(gate);
        if (seen.insert(key(child)).second) next.push_back(child);
      }
    }
    level = std::move(next);
  }
}

template <int wires>
std::vector<std::size_t> classes_by_distance(int most_gates) {
  const auto& table = ClassTable<wires>::shared();
  ClassFinder<wires> class_of;
  std::vector<std::set<std::pair<std::uint64_t, std::uint64_t>>> classes;
  each_operator<wires>(most_gates, [&](const FewWireRows<wires>& rows, int distance) {
    const OperatorClass found = class_of(rows);
    classes.resize(static_cast<std::size_t>(distance) + 1);
    classes.back().emplace(found.low, found.high);
    ASSERT_EQ(table.distance(found), std::min(distance, int{ClassTable<wires>::beyond}));
    ASSERT_TRUE(distance >= ClassTable<wires>::beyond ||
                (table.may_have(ClassSketch<wires>(rows).own()) &&
                 table.may_have_any(ClassSketch<wires>(rows).own_of_all())));
  });
  std::vector<std::size_t> sizes;
  std::set<std::pair<std::uint64_t, std::uint64_t>> all;
  for (const auto& of : classes) {
    sizes.push_back(of.size());
    all.insert(of.begin(), of.end());
  }
  EXPECT_EQ(all.size(), std::accumulate(sizes.begin(), sizes.end(), std::size_t{0}));
  return sizes;
}

TEST(FewWires, know_the_distance_of_all_operators_of_few_gates) {
  EXPECT_EQ(classes_by_distance<5>(3), (std::vector<std::size_t>{1, 1, 4, 22}));
  EXPECT_EQ(classes_by_distance<6>(2), (std::vector<std::size_t>{1, 1, 4}));
}

/// From tables of two and of three gates.
TEST(FewWires, find_what_complete_tables_have) {
  EXPECT_EQ(classes_by_distance<3>(100), (std::vector<std::size_t>{1, 1, 3, 8, 10, 3, 1}));
  const auto& in_place = PlacedTable<4>::shared();
  const auto& anywhere = OperatorTable<4>::shared();
  std::mt19937 rng(5);
  for (int round = 0; round < 60; ++round) {
    const Circuit circuit = random_clifford(4, round, rng);
    WindowRows rows = 0;
    for (const std::uint64_t string : rows_of<4>(circuit).strings) rows = rows >> 8 | string << 56;
    ASSERT_EQ(fewest<4>(circuit, Outputs::in_place), in_place.distance(rows)) << round;
    ASSERT_EQ(fewest<4>(circuit, Outputs::anywhere), anywhere.find(rows).distance) << round;
  }
}

TEST(FewWires, take_as_many_gates_as_their_neighbours_and_inverses_tell) {
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
TEST(FewWires, agree_with_the_table_of_four) {
  const auto& table = PlacedTable<4>::shared();
  std::mt19937 rng(3);
  for (int round = 0; round < 40; ++round) {
    WindowRows rows = identity_rows_on(4);
    auto wider = FewWireRows<5>::identity();
    for (int k = 0; k < 3 + round / 2; ++k) {
      const Gate gate = window_gates[rng() % window_gates.size()];
      rows = zelt::braidwerk::internal::rows_after(gate, rows);
      wider = wider.after(gate);
    }
    ClassFinder<5> class_of;
    const int distance = ClassTable<5>::shared().distance(class_of(wider));
    ASSERT_EQ(distance, std::min(table.distance(rows), int{ClassTable<5>::beyond})) << round;
  }
}

TEST(FewWires, take_twelve_gates_for_a_cycle_of_all_wires) {
  Circuit cycle;
  for (int q = 0; q < 4; ++q) {
    for (const auto& [a, b] : {std::pair{q, q + 1}, {q + 1, q}, {q, q + 1}}) {
      cycle.push_back(structures::Gate::CNOT(a, b));
    }
  }
  EXPECT_EQ(fewest(cycle, Outputs::in_place), 12);
  EXPECT_EQ(fewest(cycle, Outputs::anywhere), 0);
}

Circuit swaps(const std::vector<std::pair<int, int>>& pairs) {
  Circuit circuit;
  for (const auto& [a, b] : pairs) {
    circuit = joined(circuit, {structures::Gate::CNOT(a, b), structures::Gate::CNOT(b, a),
                               structures::Gate::CNOT(a, b)});
  }
  return circuit;
}

TEST(SixWires, take_three_gates_for_each_exchange) {
  EXPECT_EQ(fewest<6>(swaps({{0, 3}, {4, 1}, {2, 5}}), Outputs::in_place), 9);
  EXPECT_EQ(fewest<6>(swaps({{0, 3}, {3, 1}, {1, 5}}), Outputs::in_place), 9);
  EXPECT_EQ(fewest<6>(swaps({{0, 3}, {3, 1}, {1, 5}, {5, 2}}), Outputs::in_place), 12);
  EXPECT_EQ(fewest<6>(swaps({{0, 1}, {2, 3}, {1, 5}}), Outputs::anywhere), 0);
}

Circuit product(int two_qubit_gates, std::mt19937& rng) {
  Circuit circuit = one_qubit_gates<6>(rng);
  for (int k = 0; k < two_qubit_gates; ++k) {
    const auto a = static_cast<int>(rng() % 6);
    const auto b = static_cast<int>((static_cast<unsigned>(a) + 1 + rng() % 5) % 6);
    circuit = joined(joined(circuit, {structures::Gate::CNOT(a, b)}), one_qubit_gates<6>(rng));
  }
  return circuit;
}

TEST(SixWires, never_take_more_than_a_known_circuit) {
  std::mt19937 rng(6);
  for (int gates = 0; gates <= 13; ++gates) {
    for (int round = 0; round < 4; ++round) {
      const Circuit circuit = product(gates, rng);
      for (const Outputs outputs : {Outputs::in_place, Outputs::anywhere}) {
        const Fewest once = search_for_fewest<6>(circuit, outputs, 200'000, 1);
        const Fewest often = search_for_fewest<6>(circuit, outputs, 5000, 40);
        for (const Fewest& found : {once, often}) {
          ASSERT_LE(found.bound, gates);
          ASSERT_TRUE(found.count == -1 || found.count == found.bound) << found.count;
        }
        if (gates > 9) continue;
        ASSERT_EQ(once.count, once.bound) << gates;
        ASSERT_EQ(often.count, once.count) << gates;
        ASSERT_EQ(fewest<6>(inverted(circuit), outputs), once.count) << gates;
      }
    }
  }
}

/// From some rounds on the search has them, or a bound that is near.
TEST(SixWires, are_searched_to_a_proven_end) {
  std::mt19937 rng(7);
  for (const int gates : {8, 9, 40}) {
    const Circuit wanted = product(gates, rng);
    for (const Outputs outputs : {Outputs::in_place, Outputs::anywhere}) {
      int bound = 0;
      Effort effort = steps(700'000);
      effort.on_bound = [&](const LowerBound& proven) { bound = proven.count; };
      const CliffordCircuit found = search_clifford(
          images_of(wanted, 6), {.outputs = outputs, .seed = 3}, effort, OnFewQubits::finds_fewest);
      EXPECT_TRUE(implements(to_gates(found.gates), found.wires, tableau_of(wanted, 6)));
      EXPECT_LE(bound, found.size.count);
      EXPECT_GE(bound, gates == 40 ? 10 : found.size.count);
    }
  }
}

/// The search has them from the first step on, and then lowers the layers.
TEST(FewWires, are_searched_to_a_proven_end) {
  std::mt19937 rng(4);
  for (int round = 0; round < 20; ++round) {
    const Circuit wanted = random_clifford(5, 200, rng);
    const PauliFrame images = images_of(wanted, 5);
    for (const Outputs outputs : {Outputs::in_place, Outputs::anywhere}) {
      int bound = 0;
      const auto run = [&](std::uint64_t most) {
        Effort effort = steps(most);
        effort.on_bound = [&](const LowerBound& proven) { bound = proven.count; };
        const CliffordCircuit found = search_clifford(images, {.outputs = outputs, .seed = 3},
                                                      effort, OnFewQubits::finds_fewest);
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
