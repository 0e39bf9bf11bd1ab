#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <random>
#include <set>
#include <string>

#include "support/graphs.h"
#include "support/pauli.h"
#include "support/tasks.h"
#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/clifford/search/internal/closing.h"
#include "zeltbraidwerk/clifford/search/internal/layered_form.h"
#include "zeltbraidwerk/clifford/search/internal/one_sided.h"
#include "zeltbraidwerk/clifford/search/internal/operator_table.h"
#include "zeltbraidwerk/clifford/search/internal/placed_table.h"
#include "zeltbraidwerk/clifford/search/internal/search.h"
#include "zeltbraidwerk/linear/search/internal/plane_sorting.h"
#include "zeltbraidwerk/search/internal/beam.h"

namespace {

using namespace support;
using namespace zelt::braidwerk::internal;
using Circuit = std::vector<structures::Gate>;

// Distances of windows, the plain way: rows as texts, a gate as what it does to each of them.

using PlainRows = std::vector<std::array<std::string, 3>>;  // by wire: what becomes X, Z, Y there

char product(char a, char b) {
  const std::string letters = "IXZY";  // by bits
  return letters[letters.find(a) ^ letters.find(b)];
}

std::string product(std::string a, const std::string& b) {
  for (std::size_t q = 0; q < a.size(); ++q) a[q] = product(a[q], b[q]);
  return a;
}

PlainRows plain_identity(std::size_t wires) {
  PlainRows rows(wires);
  for (std::size_t q = 0; q < wires; ++q) {
    for (std::size_t k = 0; k < 3; ++k)
      rows[q][k] = std::string(wires, 'I').replace(q, 1, 1, "XZY"[k]);
  }
  return rows;
}

PlainRows plain_rows_after(const std::string& gate, PlainRows rows) {
  for (auto& of_wire : rows) {
    for (std::string& row : of_wire) {
      if (anticommute(row, gate)) row = product(row, gate);
    }
  }
  return rows;
}

std::string class_of(PlainRows rows, Outputs outputs) {
  std::vector<std::string> wires;
  for (auto& of_wire : rows) {
    std::ranges::sort(of_wire);
    wires.push_back(of_wire[0] + of_wire[1] + of_wire[2]);
  }
  if (outputs == Outputs::anywhere) std::ranges::sort(wires);
  return std::accumulate(wires.begin(), wires.end(), std::string());
}

WindowRows packed(const PlainRows& rows) {
  WindowRows result = 0;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t k = 0; k < 2; ++k) {
      for (std::size_t q = 0; q < rows.size(); ++q) {
        result |= std::string("IXZY").find(rows[i][k][q]) << (16 * i + 8 * k + 2 * q);
      }
    }
  }
  return result;
}

/// Calls visit(rows, distance) for one operator of each class at most `most` gates away.
template <class F>
void search_breadth_first(std::size_t wires, Outputs outputs, std::uint64_t allowed, int most,
                          F&& visit) {
  std::vector<std::string> gates;
  for (std::size_t b = 1, move = 0; b < wires; ++b) {
    for (std::size_t a = 0; a < b; ++a) {
      for (std::size_t labels = 0; labels < 9; ++labels, ++move) {
        if ((allowed >> move & 1) == 0) continue;
        gates.push_back(std::string(wires, 'I').replace(a, 1, 1, "XZY"[labels / 3]));
        gates.back()[b] = "XZY"[labels % 3];
      }
    }
  }
  std::set<std::string> seen{class_of(plain_identity(wires), outputs)};
  std::vector<PlainRows> level{plain_identity(wires)};
  for (int distance = 0; !level.empty() && distance <= most; ++distance) {
    std::vector<PlainRows> next;
    for (const PlainRows& rows : level) {
      visit(rows, distance);
      for (const std::string& gate : gates) {
        PlainRows child = plain_rows_after(gate, rows);
        if (seen.insert(class_of(child, outputs)).second) next.push_back(std::move(child));
      }
    }
    level = std::move(next);
  }
}

template <int wires>
void expect_free_distances(int most, int classes) {
  const auto& table = OperatorTable<wires>::shared();
  int met = 0;
  search_breadth_first(
      wires, Outputs::anywhere, ~std::uint64_t{0}, most, [&](const PlainRows& rows, int distance) {
        const auto entry = table.find(packed(rows));
        ASSERT_EQ(entry.distance, distance) << class_of(rows, Outputs::anywhere);
        ++met;
        for (unsigned move = 0; move < table.moves; ++move) {
          const auto next = table.find(rows_after(window_gates[move], packed(rows)));
          ASSERT_EQ(next.distance == distance - 1, (entry.down >> move & 1) != 0);
        }
      });
  EXPECT_EQ(met, classes);
}

TEST(CliffordWindows, know_the_distance_of_every_operator) {
  expect_free_distances<2>(9, 10);
  expect_free_distances<3>(9, 1120);
  expect_free_distances<4>(2, 1 + 54 + 1863);
  EXPECT_EQ(OperatorTable<4>::shared().size(), 1523200);
}

/// All pairs of wires, a line, a star.
constexpr std::uint64_t pair_01 = 511, pair_02 = pair_01 << 9, pair_12 = pair_01 << 18,
                        pair_03 = pair_01 << 27, pair_23 = pair_01 << 45;

template <int wires>
void expect_placed_distances(std::uint64_t allowed, int most, int classes) {
  const PlacedTable<wires> table(allowed);
  int met = 0;
  search_breadth_first(wires, Outputs::in_place, allowed, most,
                       [&](const PlainRows& rows, int distance) {
                         ASSERT_EQ(table.distance(packed(rows)), distance);
                         ++met;
                       });
  EXPECT_EQ(met, classes);
}

TEST(CliffordWindows, know_distances_with_outputs_in_place) {
  expect_placed_distances<2>(pair_01, 9, 20);
  expect_placed_distances<3>(pair_01 | pair_02 | pair_12, 9, 6720);
  expect_placed_distances<3>(pair_01 | pair_12, 12, 6720);
  expect_placed_distances<3>(pair_02, 9, 20);
  expect_placed_distances<4>(pair_01 | pair_12 | pair_23, 3, 4270);
  expect_placed_distances<4>(pair_01 | pair_02 | pair_03, 2, 460);
}

TEST(CliffordWindows, lead_down_from_every_operator_in_place) {
  const auto& table = PlacedTable<4>::shared();
  std::mt19937 rng(3);
  for (int round = 0; round < 500; ++round) {
    WindowRows rows = identity_rows_on(4);
    for (int k = 0; k < 50; ++k) rows = rows_after(window_gates[rng() % window_gates.size()], rows);
    const int distance = table.distance(rows);
    ASSERT_LE(distance, 9);
    ASSERT_GE(distance, OperatorTable<4>::shared().find(rows).distance);
    for (const Gate& gate : window_gates) {
      ASSERT_LE(std::abs(table.distance(rows_after(gate, rows)) - distance), 1);
    }
  }
}

// Searches.

std::size_t at(int k) {
  return static_cast<std::size_t>(k);
}

PauliFrame images_of(const Circuit& circuit, int n) {
  PauliFrame images = identity_images(n);
  for (const structures::Gate& gate : circuit) images.apply(gate);
  return images;
}

TEST(CliffordSearch, brings_operators_down_from_either_side) {
  std::mt19937 rng(4);
  for (const int n : {0, 1, 2, 3, 5, 40, 100}) {
    const Circuit wanted = random_clifford(n, 30 * n, rng);
    const PauliFrame images = images_of(wanted, n);
    for (const int side : {0, 1}) {
      OneSidedReduction problem(n);
      zelt::braidwerk::internal::Rng draws(1, 1);
      const Effort unlimited;
      Meter meter(unlimited);
      const auto start = problem.start(OperatorRows(images), side);
      const auto found = BeamSearch(problem, {}, draws, meter).run(start);
      ASSERT_EQ(found.size(), 1U);
      const GateList list = problem.circuit(found[0].state, found[0].moves, side);
      const CliffordCircuit made = to_circuit(list, images);
      ASSERT_TRUE(implements(to_gates(made.gates), made.wires, tableau_of(wanted, n)))
          << n << ' ' << side;
      EXPECT_LE(list.count(), n * (n + 4) * 29 / 100);
    }
  }
}

TEST(CliffordSearch, finds_layered_forms) {
  std::mt19937 rng(6);
  zelt::braidwerk::internal::Rng draws(1, 1);
  for (const int n : {0, 1, 2, 3, 6, 25, 64}) {
    for (const Outputs outputs : {Outputs::anywhere, Outputs::in_place}) {
      const Circuit wanted = random_clifford(n, n * n, rng);
      const PauliFrame images = images_of(wanted, n);
      for (const GraphsBy way : {GraphsBy::edges, GraphsBy::blocks}) {
        const GateList list = layered_list(OperatorRows(images), way, outputs, draws, steps(1));
        const CliffordCircuit found = to_circuit(list, images);
        ASSERT_TRUE(implements(to_gates(found.gates), found.wires, tableau_of(wanted, n))) << n;
        EXPECT_TRUE(outputs == Outputs::anywhere || std::ranges::is_sorted(found.wires));
        EXPECT_LE(depth_of(list.gates, n), way == GraphsBy::edges ? 2 * n + 30 : 3 * n / 2 + 30);
      }
    }
  }
}

TEST(CliffordSearch, finds_layered_forms_of_few_gates) {
  std::mt19937 rng(7);
  zelt::braidwerk::internal::Rng draws(1, 1);
  for (const int n : {0, 1, 2, 3, 6, 25, 130, 300}) {
    const Circuit wanted = random_clifford(n, 20 * n, rng);
    const PauliFrame images = images_of(wanted, n);
    const GateList list = layered_list_by_count(OperatorRows(images), draws);
    const CliffordCircuit found = to_circuit(list, images);
    ASSERT_TRUE(implements(to_gates(found.gates), found.wires, tableau_of(wanted, n))) << n;
    EXPECT_TRUE(std::ranges::is_sorted(found.wires));
    EXPECT_LE(list.count(), n * (n + 30) * 4 / 10) << n;
  }
}

TEST(CliffordSearch, puts_whole_layers_together) {
  std::mt19937 rng(8);
  for (const auto& [n, outputs, most_layers] :
       {std::tuple(9, Outputs::anywhere, 12), std::tuple(16, Outputs::anywhere, 21),
        std::tuple(24, Outputs::anywhere, 37), std::tuple(24, Outputs::in_place, 43)}) {
    const Circuit wanted = random_clifford(n, 30 * n, rng);
    const PauliFrame images = images_of(wanted, n);
    const Task task{.objective = Objective::depth, .outputs = outputs, .seed = 1};
    const CliffordCircuit found = search_clifford(images, task, steps(50'000));
    ASSERT_TRUE(implements(to_gates(found.gates), found.wires, tableau_of(wanted, n))) << n;
    EXPECT_TRUE(outputs == Outputs::anywhere || std::ranges::is_sorted(found.wires));
    EXPECT_LE(found.size.depth, most_layers) << n;
  }
}

TEST(CliffordSearch, sorts_planes) {
  std::mt19937 rng(10);
  zelt::braidwerk::internal::Rng draws(1, 1);
  const Effort unlimited;
  Meter meter(unlimited);
  for (const int n : {1, 2, 3, 4, 5, 9, 31, 32, 33, 65}) {
    for (int run = 0; run < (n < 10 ? 40 : 4); ++run) {
      const PauliFrame images = images_of(random_clifford(n, run == 0 ? 0 : 20 * n, rng), n);
      BitMatrix rows(2 * n, 2 * n);
      PlainRows planes(at(n));
      for (int p = 0; p < n; ++p) {
        for (int q = 0; q < n; ++q) {
          for (int k = 0; k < 2; ++k) {
            const char letter = "IXYZ"[images.letter(k * n + p, q)];
            rows.set(2 * p + k, 2 * q, letter == 'X' || letter == 'Y');
            rows.set(2 * p + k, 2 * q + 1, letter == 'Z' || letter == 'Y');
            planes[at(p)][at(k)] += letter;
          }
        }
        planes[at(p)][2] = product(planes[at(p)][0], planes[at(p)][1]);
      }
      const auto gates = sort_planes(rows, PlaneGates::cliffords, objective(run % 2 == 0),
                                     1 + run % 3, draws, meter);
      ASSERT_TRUE(gates) << n;
      std::vector<int> layers(at(n));
      for (const auto& [place, a, b] : *gates) {
        auto& one = planes[at(place)];
        auto& other = planes[at(place + 1)];
        const std::string gate = product(one[at(a - 1)], other[at(b - 1)]);
        for (int k = 0; k < 3; ++k) {
          if (k != a - 1) one[at(k)] = product(one[at(k)], gate);
          if (k != b - 1) other[at(k)] = product(other[at(k)], gate);
        }
        layers[at(place)] = layers[at(place + 1)] =
            std::max(layers[at(place)], layers[at(place + 1)]) + 1;
      }
      for (int p = 0; p < n; ++p) {
        for (std::string row : planes[at(p)]) {
          EXPECT_NE(row[at(p)], 'I');
          row[at(p)] = 'I';
          EXPECT_EQ(row, std::string(at(n), 'I'));
        }
      }
      EXPECT_LE(std::ranges::max(layers), 4 * n + 2);
    }
  }
}

TEST(CliffordSearch, has_few_layers_on_devices) {
  std::mt19937 rng(11);
  BitGraph line(16), grid(12), star(5);
  for (int v = 1; v < 16; ++v) line.join(v - 1, v);
  for (int v = 0; v < 12; ++v) {
    if (v % 4 != 3) grid.join(v, v + 1);
    if (v < 8) grid.join(v, v + 4);
  }
  for (int v = 1; v < 5; ++v) star.join(0, v);  // without a path through all of it
  for (const auto& [device, most_layers] :
       {std::tuple(&line, 40), std::tuple(&grid, 30), std::tuple(&star, 20)}) {
    const int n = device->size();
    for (const Outputs outputs : {Outputs::anywhere, Outputs::in_place}) {
      const Circuit wanted = random_clifford(n, 30 * n, rng);
      const PauliFrame images = images_of(wanted, n);
      const Task task{
          .objective = Objective::depth, .outputs = outputs, .device = device, .seed = 1};
      const GateList list = clifford_list(images, task, steps(100'000));
      const CliffordCircuit found = to_circuit(list, images);
      ASSERT_TRUE(implements(to_gates(found.gates), found.wires, tableau_of(wanted, n))) << n;
      EXPECT_TRUE(outputs == Outputs::anywhere || std::ranges::is_sorted(found.wires));
      for (const Gate& gate : list.gates) {
        EXPECT_TRUE(device->joined(wire_of(gate.a), wire_of(gate.b)));
      }
      EXPECT_LE(found.size.depth, most_layers) << n;
    }
  }
}

TEST(CliffordSearch, closes_by_two_layers_of_swaps) {
  std::mt19937 rng(9);
  for (int n = 1; n < 9; ++n) {
    const Circuit wanted = random_clifford(n, 20 * n, rng);
    const PauliFrame images = images_of(wanted, n);
    const GateList list = clifford_list(images, {.outputs = Outputs::anywhere}, steps(0));
    const GateList closed = with_layers_of_swaps(list);
    const CliffordCircuit made = to_circuit(closed, images);
    ASSERT_TRUE(implements(to_gates(made.gates), made.wires, tableau_of(wanted, n))) << n;
    EXPECT_TRUE(std::ranges::is_sorted(made.wires));
    EXPECT_LE(depth_of(closed.gates, n), depth_of(list.gates, n) + 6);
  }
}

TEST(CliffordSearch, leaves_outputs_where_they_come_out) {
  const Circuit wanted{structures::Gate::H(0),       structures::Gate::CNOT(0, 2),
                       structures::Gate::CNOT(2, 0), structures::Gate::CNOT(0, 2),
                       structures::Gate::CNOT(1, 0), structures::Gate::S(1)};
  const PauliFrame images = images_of(wanted, 3);
  const auto free = search_clifford(images, {.outputs = Outputs::anywhere}, steps(100));
  EXPECT_EQ(free.wires, (std::vector<int>{2, 1, 0}));
  EXPECT_EQ(free.size.count, 1);
  const auto placed = search_clifford(images, {.outputs = Outputs::in_place}, steps(1000));
  EXPECT_EQ(placed.wires, (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(placed.size.count, 4);
}

TEST(CliffordSearch, ends_on_images_of_no_operator) {
  search_clifford(PauliFrame(4, 8), {}, steps(2000));
  PauliFrame equal(3, 6);
  for (int r = 0; r < 6; ++r) equal.set_letter(r, r % 2, 1);
  search_clifford(equal, {}, steps(2000));
}

}  // namespace
