#include "zeltbraidwerk/phase/gray_synth.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "support/digest.h"
#include "support/graphs.h"
#include "support/phases.h"

namespace {

using namespace support;
using structures::Gate;
using structures::Parameter;
using structures::Table;
using testing::ElementsAre;
using testing::Pair;

std::string circuit_of(const PhasePolynomial& poly, Table& table) {
  return show(gray_synth(poly, table));
}

TEST(GraySynth, Examples) {
  Table table(3);
  table.cnot(0, 2);
  const Table before = table;
  EXPECT_EQ(circuit_of({}, table), "");
  EXPECT_EQ(table, before);
  EXPECT_EQ(circuit_of(polynomial({"010"}), table), "PH 1");
  EXPECT_TRUE(table.is_identity());
  EXPECT_EQ(circuit_of(polynomial({"10", "11"}), table), "PH 0, CNOT 1 0, PH 0");
  EXPECT_EQ(show(table.to_bool_bool()), "11 01");
  EXPECT_EQ(circuit_of(polynomial({"0101"}), table), "CNOT 3 1, PH 1");
  EXPECT_EQ(show(table.to_bool_bool()), "1000 0101 0010 0001");
}

TEST(GraySynth, RefusesWhatNoWireCanHold) {
  Table table(2);
  EXPECT_THROW(gray_synth(polynomial({"000", "010"}), table), std::invalid_argument);
  EXPECT_THROW(gray_synth(polynomial({"01", "011"}), table), std::invalid_argument);
  EXPECT_THROW(gray_synth({{BoolRow(), Parameter(1.0)}}, table), std::invalid_argument);
  EXPECT_EQ(table, Table(2));
}

TEST(GraySynth, ServesTheTermsAndKeepsItsGates) {
  Rng rng(11);
  Digest digest;
  for (int trial = 0; trial < 400; ++trial) {
    const bool wide = trial % 40 == 0;
    const int n = 1 + static_cast<int>(rng() % (wide ? 80 : 8));
    const int terms = static_cast<int>(rng() % (wide ? 200 : 40));
    const PhasePolynomial poly = random_polynomial(n, terms, rng);
    Table table(n);
    const std::vector<Gate> circuit = gray_synth(poly, table);
    ASSERT_EQ(fault(poly, circuit, table), "") << show(circuit);
    digest.add(circuit);
  }
  EXPECT_EQ(digest.text(), "5b9b55c422d626af");
}

TEST(GraySynthSteps, WorkOnTheParityTable) {
  BoolMatrix m;
  std::vector<Parameter> params;
  phase_poly_to_table(polynomial({"110", "011", "111", "100"}), m, params, 3);
  EXPECT_EQ(show(m), "0111 1011 1001");  // the key's order: 011, 100, 110, 111
  EXPECT_EQ(params[0].value, 2);
  phase_poly_to_table(polynomial({"01"}), m, params, 2);
  EXPECT_EQ(show(m), "01110 10111");

  m = matrix({"0111", "1011", "1001"});
  EXPECT_THAT(do_split(1, {3, 1, 0}, m), Pair(ElementsAre(1), ElementsAre(3, 0)));
  EXPECT_EQ(count_bits_restricted(m, 2, {0, 1, 2}, false), 2);
  EXPECT_EQ(find_best_split({0, 1, 2, 3}, {1, 2}, m), 1);
  EXPECT_EQ(find_best_split({0, 1}, {}, m), -1);
  EXPECT_EQ(find_best_split({}, {2, 1}, m), 1);
  // Two ones and two zeros score 3, one more than a row of two zeros and one 1 elsewhere.
  EXPECT_EQ(find_best_split({0, 1, 2, 3}, {0, 1, 2}, matrix({"0011", "0111", "0001"})), 1);
  std::set<int> zeros{0, 1, 2};
  std::set<int> ones{3};
  split_cols_on_row(zeros, ones, m, 0);
  EXPECT_THAT(zeros, ElementsAre(0));
  EXPECT_THAT(ones, ElementsAre(1, 2, 3));

  std::vector<Gate> circuit;
  place_cnot(0, 1, circuit, m);
  EXPECT_EQ(show(circuit), "CNOT 0 1");
  EXPECT_EQ(show(m), "1100 1011 1001");

  m = matrix({"0101", "1100", "1000"});
  params = {1.0, 2.0, 3.0, Parameter("t")};
  std::set<int> cols{0, 2, 3};
  reduce_cols(cols, circuit, m, params);
  EXPECT_EQ(show(circuit), "CNOT 0 1, PH 0");
  EXPECT_EQ(circuit.back(), Gate("PH", {0}, {Parameter("t")}, true));
  EXPECT_THAT(cols, ElementsAre(0, 2));
}

}  // namespace
