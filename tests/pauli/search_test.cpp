#include "support/tasks.h"
#include "zeltbraidwerk/pauli/search/internal/network_search.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <random>
#include <set>

#include "support/dense.h"
#include "support/graphs.h"
#include "support/rotations.h"
#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/pauli/search/internal/network_emission.h"
#include "zeltbraidwerk/search/internal/orders.h"

namespace {

using support::steps;
using namespace zelt::braidwerk::internal;
using support::PauliRows;
using support::text;

/// What is wrong with a result, in words; nothing when it is right.
std::string fault(const PauliRows& table, int n, const NetworkTask& task,
                  const PlacedCircuit& result) {
  for (const auto& gate : result.gates) {
    if (gate.qbits.size() < 2) continue;
    if (task.device != nullptr && !task.device->joined(gate.qbits[0], gate.qbits[1])) {
      return "not an edge: " + gate.to_string();
    }
  }
  const support::Unfolded unfolded = support::unfold(result.gates, n);
  if (task.closes() &&
      !support::implements(unfolded.clifford, result.wires, structures::OperatorTableau(n))) {
    return "not closed";
  }
  if (task.closes() && task.in_place() && !std::ranges::is_sorted(result.wires)) {
    return "not on its wire";
  }
  return support::fault(table, task.in_order, unfolded);
}

TEST(NetworkSearch, SpentBeforeItBeganAnEffortGivesTheFirstCircuit) {
  std::mt19937 rng(2);
  const Rotations list = support::named(support::random_rows(30, 6, rng), 6);
  Effort spent;
  spent.control.deadline = Control::Clock::now();
  EXPECT_EQ(search_network(list, {}, spent).gates, search_network(list, {}, steps(0)).gates);
}

// Relays of several places and walks share a budget of time, whichever of them it ends in.
TEST(NetworkSearch, LongListsInABudget) {
  std::mt19937 rng(3);
  const int n = 6;
  const PauliRows table = support::random_rows(320, n, rng);
  const Rotations list = support::named(table, n);
  for (const bool in_order : {false, true}) {
    for (const int milliseconds : {20, 400, 1500}) {
      NetworkTask task;
      task.in_order = in_order;
      Effort effort;
      const auto began = Control::Clock::now();
      effort.control.deadline = began + std::chrono::milliseconds(milliseconds);
      const PlacedCircuit result = search_network(list, task, effort);
      const std::chrono::duration<double> taken = Control::Clock::now() - began;
      EXPECT_EQ(fault(table, n, task, result), "") << milliseconds << (in_order ? " in order" : "");
      // Loose, as the machine may have other things to do.
      EXPECT_LT(taken.count(), 1e-3 * milliseconds + 1);
    }
  }
}

std::vector<bool> qubits_of(const std::vector<unsigned char>& row) {
  std::vector<bool> qubits;
  for (const unsigned char letter : row) qubits.push_back(letter != 0);
  return qubits;
}

/// Gates of ladders: rotations on the same qubits share one where they meet, XX, YY and ZZ of a
/// pair three gates, fewer of these two. Of others each string has its own.
int grouped_count(const PauliRows& table, bool in_order) {
  std::vector<PauliRows> groups;
  for (const auto& row : table) {
    std::ptrdiff_t at = std::ssize(groups) - 1;
    const auto is_its = [&](const PauliRows& group) {
      return qubits_of(group[0]) == qubits_of(row);
    };
    const auto commutes = [&](const PauliRows& group) {
      return std::ranges::none_of(
          group, [&](const auto& other) { return support::anticommute(text(other), text(row)); });
    };
    const auto group_at = [&] { return groups.begin() + at; };
    while (at >= 0 && !is_its(*group_at()) && (!in_order || commutes(*group_at()))) --at;
    if (at >= 0 && is_its(*group_at())) {
      group_at()->push_back(row);
    } else {
      groups.push_back({row});
    }
  }
  int count = 0;
  for (const PauliRows& group : groups) {
    const std::set<std::vector<unsigned char>> strings(group.begin(), group.end());
    const auto weight = static_cast<int>(std::ranges::count(qubits_of(group[0]), true));
    const auto different = static_cast<int>(strings.size());
    count += weight == 2 ? std::max(2, different) : 2 * (weight - 1) * different;
  }
  return count;
}

/// XX, YY and ZZ on pairs of a random graph, and now and then heavier strings of one letter.
PauliRows one_letter_strings(int n, int count, unsigned most_letters, std::mt19937& rng) {
  PauliRows table;
  for (int k = 0; k < count; ++k) {
    std::vector<unsigned char> row(static_cast<std::size_t>(n));
    const std::size_t weight = rng() % 4 == 0 ? 1 + rng() % 4 : 2;
    const auto letter = static_cast<unsigned char>(3 - rng() % most_letters);
    for (std::size_t w = 0; w < weight; ++w) row[rng() % row.size()] = letter;
    if (std::ranges::count(qubits_of(row), true) > 1) table.push_back(row);
  }
  return table;
}

TEST(NetworkSearch, NeverMoreGatesThanGroupedLadders) {
  std::mt19937 rng(4);
  for (int instance = 0; instance < 60; ++instance) {
    const int n = 2 + static_cast<int>(rng() % (instance % 3 == 0 ? 30 : 8));
    const PauliRows table = one_letter_strings(n, instance % 5 == 0 ? 400 : 40, 3, rng);
    for (const bool in_order : {false, true}) {
      const int most = grouped_count(table, in_order);
      for (const auto outputs : {Outputs::left_open, Outputs::in_place, Outputs::anywhere}) {
        NetworkTask task;
        task.in_order = in_order;
        task.outputs = outputs;
        task.seed = static_cast<std::uint64_t>(instance);
        for (const std::uint64_t count : {0, 100}) {
          const auto result = search_network(support::named(table, n), task, steps(count));
          ASSERT_EQ(fault(table, n, task, result), "") << text(table);
          EXPECT_LE(result.size.count, most) << instance << ": " << text(table);
        }
      }
    }
  }
}

/// Of a pair's strings, two layers for each colour of the edges or three where it has XX, YY and
/// ZZ.
TEST(NetworkSearch, NeverMoreLayersThanAnEdgeColouring) {
  std::mt19937 rng(5);
  for (int instance = 0; instance < 60; ++instance) {
    const int n = 2 + static_cast<int>(rng() % 20);
    const bool bipartite = rng() % 2 == 0;
    const unsigned letters = instance % 3 == 0 ? 3 : 1;
    std::vector<int> degrees(static_cast<std::size_t>(n));
    PauliRows table;
    for (std::size_t b = 0; b < degrees.size(); ++b) {
      for (std::size_t a = 0; a < b; ++a) {
        if (rng() % 2 == 0 || (bipartite && (a + b) % 2 == 0)) continue;
        ++degrees[a];
        ++degrees[b];
        for (unsigned k = 0; k < letters; ++k) {
          auto& row = table.emplace_back(static_cast<std::size_t>(n));
          row[a] = row[b] = static_cast<unsigned char>(3 - k);
        }
      }
    }
    std::ranges::shuffle(table, rng);
    const int colours = std::ranges::max(degrees) + (bipartite ? 0 : 1);
    for (int layer = 0; layer < 2 && letters == 1; ++layer) {
      for (std::size_t q = 0; q < degrees.size(); ++q) {
        table.emplace_back(static_cast<std::size_t>(n))[q] = 1;
      }
    }
    NetworkTask task;
    task.objective = Objective::depth;
    for (const bool in_order : {false, true}) {
      if (in_order && letters > 1) continue;
      task.in_order = in_order;
      for (const auto outputs : {Outputs::left_open, Outputs::in_place}) {
        task.outputs = outputs;
        for (const std::uint64_t count : {0, 500}) {
          const auto result = search_network(support::named(table, n), task, steps(count));
          ASSERT_EQ(fault(table, n, task, result), "") << text(table);
          EXPECT_LE(result.size.depth, colours * (letters == 1 ? 2 : 3)) << text(table);
        }
      }
    }
  }
}

/// Z strings, and single letters after them.
PauliRows layer_of(int n, int terms, std::mt19937& rng) {
  PauliRows table = support::random_rows(terms, n, rng);
  for (auto& row : table) {
    for (auto& letter : row) letter = letter % 2 == 0 ? 0 : 3;
  }
  for (std::size_t q = 0; q < static_cast<std::size_t>(n); ++q) {
    for (unsigned char letter = 1; letter <= 2; ++letter) {
      table.emplace_back(static_cast<std::size_t>(n))[q] = letter;
    }
  }
  return table;
}

TEST(NetworkSearch, LayersCostNoMoreThanTheirParities) {
  std::mt19937 rng(6);
  for (int instance = 0; instance < 6; ++instance) {
    const PauliRows one = layer_of(8, 40, rng);
    const PauliRows layer(one.begin(), one.begin() + 40);
    PauliRows parities;  // each once
    std::ranges::copy_if(layer, std::back_inserter(parities), [&](const auto& row) {
      return std::ranges::find(parities, row) == parities.end();
    });
    PauliRows three;
    for (int k = 0; k < 3; ++k) three.insert(three.end(), one.begin(), one.end());
    NetworkTask task;
    task.seed = 3;
    for (const std::uint64_t count : {0, 20000}) {
      task.in_order = false;
      const int free = search_network(support::named(parities, 8), task, steps(count)).size.count;
      task.in_order = true;
      EXPECT_LE(search_network(support::named(one, 8), task, steps(count)).size.count, free);
      const auto result = search_network(support::named(three, 8), task, steps(count));
      EXPECT_EQ(fault(three, 8, task, result), "");
      EXPECT_LE(result.size.count, 3 * free);
    }
  }
}

TEST(NetworkSearch, FewestKnown) {
  // XX, YY and ZZ on a pair take three gates between them.
  PauliRows chain;
  for (int q = 0; q + 1 < 6; ++q) {
    for (unsigned char letter = 1; letter <= 3; ++letter) {
      auto& row = chain.emplace_back(6);
      row[static_cast<std::size_t>(q)] = row[static_cast<std::size_t>(q) + 1] = letter;
    }
  }
  NetworkTask task;
  task.in_order = true;
  EXPECT_EQ(search_network(support::named(chain, 6), task, steps(3000)).size.count, 15);

  const auto [letters, n] = std::pair(support::rows({"XYZI", "IZXX"}), 4);
  task.outputs = Outputs::left_open;
  EXPECT_EQ(search_network(support::named(letters, n), task, steps(1000)).size.count, 3);
}

TEST(NetworkSearch, EndsWhereALetterOnTheHubOfAStarChangesMuch) {
  // A gate between the hub and wire 9 once seemed to gain both when it was played and undone.
  const PauliRows table =
      support::rows({"XIIXZIIIIIIIIXYIIIIIIIYIIIZZXIIIZIIZIIIIIIIIZYIIIIIYXXYIIIIXZXII",
                     "XZIIIIZIIIXIIIIIIIIIXXYIXIZIIIYXZIZIIIIXYIIYZIIYIIIIIIIIXIIXZXYI",
                     "IZIXZIIYIIIIXIIIIIXIXXYIXIZZIIIIZXIZZZIXYIIYZYXYIIIYIXIXIZIIIXII",
                     "IIIIIYZIIIIIIXIIXIIIIXIIIIZIIZYIZXIZZIIIYYIYIIIIIXYIIXIIIZIIIIYI",
                     "IZIIIIIIIIIIXIIIIIIIXIYIIIIZIIIXIXZIIZIIIIIYIIIIZXIIIIYIIZIIZIYI",
                     "IIXIZIIYIIXYXIYIIIIIIXIIXIZIIIIIZIIZZIZXIIIYIYIIZIIYIIIXXZIIIXIZ",
                     "IIIIIIZIIXIYIXIIIIIYIIIXXIIIIZIIIIIZIIZXIIIIIIIIZIYIXIIXIZIIIIIZ",
                     "IZIIIYIIIIXIXIIXIIIIIIIIXIIZIZIXIIIZIIIXIYIIZYIIZXYIIXIXIIIIIXIZ",
                     "XZIXIYIIIIIIIIIXIIIIIXYIIZIIIZIXIIZZIIIIIYIIIIIIZIIIXIIIXIIIZIIZ",
                     "IIIXIIIIIIXYIIIXXZIIXIIXIIZZIIYIZIIIIZIIYYIYIYIIIIIYIXIXXIIIZXYI",
                     "XIIIZYZYXIXIXIIIIIXYIXIIXZIZIZIXZXIIIIIXIIXIZIIIZXIIXIIIXZIIZIIZ",
                     "XZIXIIIIXXXYIIIIXIIIXXIIXIZIIIIIZXIIZIIIIIIIIIXYZIYYXIIXIIIIIIYI"});
  const BitGraph star{support::star(64)};
  NetworkTask task;
  task.device = &star;
  EXPECT_EQ(fault(table, 64, task, search_network(support::named(table, 64), task, steps(0))), "");
}

/// The gates of a network, rotation r by angle 0.1 + r.
struct Writer {
  bool allows_cz = false;
  std::vector<structures::Gate> gates;

  void cz(int a, int b) { gates.push_back(structures::Gate::CZ(a, b)); }
  void cnot(int control, int target) { gates.push_back(structures::Gate::CNOT(control, target)); }
  void change(int label, int q) {
    using structures::Gate;
    gates.push_back(label == label_y ? Gate::H(q) : label == label_x ? Gate::RXP(q) : Gate::S(q));
  }
  void rotate(int row, int label, int q, bool negative) {
    const double angle = (negative ? -1 : 1) * (0.1 + row);
    const std::string letters = "IXYZ";
    gates.push_back({std::string("R") + letters[letter_of_label(label)], {q}, {angle}, false});
  }
};

/// Whether an operator carries X and Z of each qubit q to letters on wire wires[q].
bool is_local(const support::Dense& op, const std::vector<int>& wires) {
  for (std::size_t q = 0; q < wires.size(); ++q) {
    for (const char letter : {'X', 'Z'}) {
      std::string given(wires.size(), 'I');
      given[q] = letter;
      const support::Dense image = op * support::pauli(given) * op.dagger();
      int found = 0;
      for (const char other : {'X', 'Y', 'Z'}) {
        std::string there(wires.size(), 'I');
        there[static_cast<std::size_t>(wires[q])] = other;
        found += image.near(support::pauli(there)) || image.near(support::pauli(there) * -1.0);
      }
      if (found != 1) return false;
    }
  }
  return true;
}

TEST(NetworkSearch, EndsInATargetAfterAllRotationsInOrder) {
  std::mt19937 rng(8);
  for (int instance = 0; instance < 60; ++instance) {
    const int n = 2 + instance % 3;
    const int count = static_cast<int>(rng() % 9);
    Rotations rotations = support::named(support::random_rows(count, n, rng), n);
    if (count == 0) rotations.frame = PauliFrame(n, 0);
    const auto circuit = support::random_clifford(n, 6 * n, rng);
    support::Dense wanted = support::Dense::identity(std::size_t{1} << n);
    for (int r = 0; r < count; ++r) {
      const bool negative = rng() % 2 != 0;
      rotations.frame.set_negative(r, negative);
      wanted =
          support::rotation(text(rotations.frame.letters(r)), (negative ? -1 : 1) * (0.1 + r)) *
          wanted;
    }
    wanted = support::unitary(circuit, n) * wanted;

    CliffordTarget target{identity_images(n), circuit};
    for (const auto& gate : support::inverse(circuit)) target.preimages.apply(gate);
    const BitGraph graph{support::random_device(n, 10, rng)};
    NetworkTask task;
    task.in_order = true;
    task.target = &target;
    task.outputs = support::outputs(instance % 2 == 0);
    task.objective = support::objective(instance % 5 == 0);
    task.seed = static_cast<std::uint64_t>(instance);
    if (instance % 3 == 0) task.device = &graph;
    std::optional<Network> given;
    for (const std::uint64_t effort : {0, 500}) {
      const Network network = search_events(rotations, task, steps(effort));
      Writer writer{instance % 4 == 0, {}};
      NetworkEmission(rotations.frame, writer).run(network.events);
      const support::Dense left = support::unitary(writer.gates, n) * wanted.dagger();
      EXPECT_TRUE(is_local(left, network.wires)) << instance << ", " << effort;
      EXPECT_TRUE(!task.in_place() || network.wires == in_order(n));
      for (const NetworkEvent& event : network.events) {
        if (event.row >= 0 || task.device == nullptr) continue;
        EXPECT_TRUE(graph.joined(wire_of(event.gate.a), wire_of(event.gate.b)));
      }
      ASSERT_TRUE(!given || network.size.key(task.objective) <= given->size.key(task.objective));
      given = network;
      task.given = &*given;
    }
    task.seed += 100;
    const Network other = search_events(rotations, task, steps(0));
    EXPECT_LE(other.size.key(task.objective), given->size.key(task.objective));
  }
}

}  // namespace
