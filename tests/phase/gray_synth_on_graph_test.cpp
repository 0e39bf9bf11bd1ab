#include "zeltbraidwerk/phase/gray_synth_on_graph.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "support/digest.h"
#include "support/graphs.h"
#include "support/phases.h"
#include "zeltbraidwerk/phase/gray_synth.h"

namespace {

using namespace support;
using structures::Gate;
using structures::Graph;
using structures::Parameter;
using structures::Table;

std::set<int> first(int count) {
  std::set<int> result;
  for (int k = 0; k < count; ++k) result.insert(k);
  return result;
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

TEST(GraySynthOnGraph, ServesTheTermsAndKeepsItsGates) {
  Rng rng(19);
  Digest digest;
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
    digest.add(circuit);
  }
  EXPECT_EQ(digest.text(), "4b4033edc65a6004");
}

TEST(GraySynthOnGraph, StepsKeepWhatTheyLeaveBehind) {
  Rng rng(29);
  Digest digest;
  for (int trial = 0; trial < 100; ++trial) {
    const int n = 2 + static_cast<int>(rng() % 7);
    const Graph device = random_device(n, 20, rng);
    const PhasePolynomial poly = random_polynomial(n, 15, rng);
    const int terms = static_cast<int>(poly.size());
    BoolMatrix m;
    std::vector<Parameter> params;
    phase_poly_to_table(poly, m, params, n);
    std::vector<Gate> circuit;
    std::set<int> rows = first(n);
    std::set<int> cols = first(terms);
    if (trial % 2 == 0) {
      base_recursion_step_graph(cols, rows, device, circuit, m, params);
    } else {
      int target = static_cast<int>(rng() % at(n));
      while (!device.is_non_cutting(target)) target = (target + 1) % n;
      std::erase_if(cols, [&](int c) { return !m[at(target)][at(c)]; });
      ones_recursion_step_graph(cols, rows, target, device, circuit, m, params);
    }
    digest.add(circuit, cols, m);
    ASSERT_EQ(rows, first(n));
  }
  EXPECT_EQ(digest.text(), "8f3c130e14d5a42c");

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
