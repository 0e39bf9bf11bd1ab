#include "zeltbraidwerk/phase/gray_synth_on_graph.h"

#include <gtest/gtest.h>

#include <numeric>
#include <stdexcept>

#include "support/graphs.h"
#include "support/phases.h"
#include "zeltbraidwerk/phase/gray_synth.h"

namespace {

using namespace support;
using structures::Gate;
using structures::Graph;
using structures::Parameter;
using structures::Table;

/// The two steps as they are written, on sets and whole subgraphs.
struct Naive {
  const Graph& graph;
  std::vector<Gate> circuit;
  BoolMatrix m;
  std::vector<Parameter> params;

  int ones(const std::set<int>& cols, int row) const {
    return static_cast<int>(std::ranges::count_if(cols, [&](int c) { return m[at(row)][at(c)]; }));
  }

  std::set<int> take_ones(std::set<int>& cols, int row) const {
    std::set<int> taken;
    for (const int c : cols) {
      if (m[at(row)][at(c)]) taken.insert(c);
    }
    for (const int c : taken) cols.erase(c);
    return taken;
  }

  void reduce(std::set<int>& cols) {
    std::set<int> left;
    for (const int c : cols) {
      std::vector<int> wires;
      for (int r = 0; r < graph.n; ++r) {
        if (m[at(r)][at(c)]) wires.push_back(r);
      }
      if (wires.size() == 1) {
        circuit.push_back(Gate("PH", wires, {params[at(c)]}, true));
      } else {
        left.insert(c);
      }
    }
    cols = left;
  }

  void base(std::set<int>& cols, const std::set<int>& rows) {
    if (rows.empty() || cols.empty()) return;
    const Graph sub = graph.induced_subgraph(rows);
    int b = -1;
    int best = -1;
    for (const int r : rows) {
      const int set = ones(cols, r);
      const int score = std::max(set, static_cast<int>(cols.size()) - set);
      if (score <= best || !sub.is_non_cutting(r)) continue;
      b = r;
      best = score;
    }
    if (b < 0) return;
    std::set<int> taken = take_ones(cols, b);
    std::set<int> rest = rows;
    rest.erase(b);
    base(cols, rest);
    ones_step(taken, rows, b);
  }

  void ones_step(std::set<int>& cols, const std::set<int>& rows, int t) {
    if (cols.empty()) return;
    int k = -1;
    int best = -1;
    for (const int w : graph.neighbors(t)) {
      if (!rows.contains(w) || ones(cols, w) <= best) continue;
      best = ones(cols, w);
      k = w;
    }
    if (best == 0) place_cnot(k, t, circuit, m);
    if (k >= 0) place_cnot(t, k, circuit, m);
    reduce(cols);
    std::set<int> taken = take_ones(cols, t);
    std::set<int> rest = rows;
    rest.erase(t);
    base(cols, rest);
    ones_step(taken, rows, t);
  }
};

std::set<int> first(int count) {
  std::set<int> result;
  for (int k = 0; k < count; ++k) result.insert(k);
  return result;
}

Naive naive_for(const PhasePolynomial& poly, const Graph& graph) {
  Naive naive{graph, {}, {}, {}};
  phase_poly_to_table(poly, naive.m, naive.params, graph.n);
  return naive;
}

std::string circuit_of(const PhasePolynomial& poly, Graph graph, Table& table) {
  return show(gray_synth_on_graph(poly, graph, table));
}

TEST(GraySynthOnGraph, Examples) {
  Table table(1);
  EXPECT_EQ(circuit_of({}, line(3), table), "");
  EXPECT_EQ(table, Table(3));
  EXPECT_EQ(circuit_of(polynomial({"100", "001"}), line(3), table), "PH 2, PH 0");
  EXPECT_EQ(table, Table(3));
  EXPECT_EQ(circuit_of(polynomial({"11"}), line(2), table), "CNOT 0 1, PH 1");
  // The neighbour in between holds nothing to cancel against until it is given something.
  EXPECT_EQ(circuit_of(polynomial({"101"}), line(3), table), "CNOT 1 0, CNOT 0 1, CNOT 1 2, PH 2");
  EXPECT_EQ(circuit_of(polynomial({"1"}), Graph(1), table), "PH 0");
  EXPECT_EQ(circuit_of({}, Graph(), table), "");
}

TEST(GraySynthOnGraph, RefusesWhatCannotBeServed) {
  Table table(4);
  const Graph apart = graph(4, {{0, 1}, {2, 3}});
  EXPECT_THROW(circuit_of(polynomial({"0110"}), apart, table), std::invalid_argument);
  EXPECT_THROW(circuit_of(polynomial({"1111", "0001"}), Graph(4), table), std::invalid_argument);
  EXPECT_THROW(circuit_of(polynomial({"0000"}), line(4), table), std::invalid_argument);
  EXPECT_THROW(circuit_of(polynomial({"111"}), line(4), table), std::invalid_argument);
  EXPECT_EQ(table, Table(4));
  EXPECT_EQ(circuit_of(polynomial({"0100", "0001"}), apart, table), "PH 3, PH 1");

  Rng rng(2);
  for (int trial = 0; trial < 200; ++trial) {  // whatever the graph is, the walk ends
    const int n = 1 + static_cast<int>(rng() % 8);
    const Graph device = with_random_edges(Graph(n), 20, rng);
    const PhasePolynomial poly = random_polynomial(n, 10, rng);
    try {
      Graph copy = device;
      const std::vector<Gate> circuit = gray_synth_on_graph(poly, copy, table);
      ASSERT_EQ(fault(poly, circuit, table), "");
      ASSERT_TRUE(runs_on(device, circuit));
    } catch (const std::invalid_argument&) {
      ASSERT_FALSE(device.is_connected());
    }
  }
}

TEST(GraySynthOnGraph, IsTheWrittenRecursionOnEveryDevice) {
  Rng rng(19);
  for (int trial = 0; trial < 250; ++trial) {
    const bool wide = trial % 50 == 0;
    const int n = 1 + static_cast<int>(rng() % (wide ? 70 : 9));
    Graph device = random_device(n, static_cast<unsigned>(rng() % 50), rng);
    const int terms = static_cast<int>(rng() % (wide ? 80 : 40));
    const PhasePolynomial poly = random_polynomial(n, terms, rng);
    Table table(n);
    const std::vector<Gate> circuit = gray_synth_on_graph(poly, device, table);
    ASSERT_EQ(fault(poly, circuit, table), "") << device << show(circuit);
    ASSERT_TRUE(runs_on(device, circuit));

    Naive naive = naive_for(poly, device);
    std::set<int> cols = first(static_cast<int>(poly.size()));
    naive.reduce(cols);
    naive.base(cols, first(n));
    ASSERT_EQ(circuit, naive.circuit) << device;
  }
}

TEST(GraySynthOnGraph, StepsLeaveTheirArgumentsAsWritten) {
  Rng rng(29);
  for (int trial = 0; trial < 100; ++trial) {
    const int n = 2 + static_cast<int>(rng() % 7);
    const Graph device = random_device(n, 20, rng);
    const PhasePolynomial poly = random_polynomial(n, 15, rng);
    const int terms = static_cast<int>(poly.size());
    Naive naive = naive_for(poly, device);
    BoolMatrix m = naive.m;
    std::vector<Gate> circuit;
    std::set<int> rows = first(n);
    std::set<int> cols = first(terms);
    std::set<int> expected = cols;
    if (trial % 2 == 0) {
      base_recursion_step_graph(cols, rows, device, circuit, m, naive.params);
      naive.base(expected, rows);
    } else {
      int target = static_cast<int>(rng() % at(n));
      while (!device.is_non_cutting(target)) target = (target + 1) % n;
      cols = expected = naive.take_ones(expected, target);
      ones_recursion_step_graph(cols, rows, target, device, circuit, m, naive.params);
      naive.ones_step(expected, rows, target);
    }
    ASSERT_EQ(circuit, naive.circuit);
    ASSERT_EQ(cols, expected);
    ASSERT_EQ(m, naive.m);
    ASSERT_EQ(rows, first(n));
  }

  // A target without a neighbour among the rows: the step ends.
  BoolMatrix m = matrix({"1", "0", "1"});
  std::vector<Parameter> params{1.0};
  std::vector<Gate> circuit;
  std::set<int> cols{0};
  std::set<int> rows{0, 2};
  ones_recursion_step_graph(cols, rows, 0, line(3), circuit, m, params);
  EXPECT_EQ(show(circuit), "");
}

}  // namespace
