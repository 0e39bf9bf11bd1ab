#include "zeltbraidwerk/foundations/table.h"

#include <gtest/gtest.h>

#include <sstream>

#include "support/graphs.h"

namespace {

using structures::Gate;
using structures::Table;
using support::show;

TEST(Table, Texts) {
  Table table(2);
  table.cnot(0, 1);
  std::ostringstream out;
  out << table;
  EXPECT_EQ(out.str(), "1 0 \n1 1 \n");
  EXPECT_EQ(table.to_string(), "[[1 0]\n [1 1]]\n");
  EXPECT_EQ(Table(1).to_string(), "[[1]]\n");
  EXPECT_EQ(Table(0).to_string(), "[");
}

TEST(Table, EmptyAndUnassigned) {
  for (const Table& table : {Table(), Table(0)}) {
    EXPECT_TRUE(table.is_identity());
    EXPECT_TRUE(table.to_bool_bool().empty());
    EXPECT_EQ(table.inverse(), table);
    EXPECT_EQ(update_table(table, {}), table);
  }
}

TEST(Table, RowsAndPermutation) {
  const BoolMatrix m = support::matrix({"110", "001", "101"});
  Table table = support::table(m);
  EXPECT_FALSE(table.is_identity());
  table.swap_lines(0, 2);
  EXPECT_EQ(show(table.to_bool_bool()), "101 001 110");
  table.swap_lines(1, 1);
  table.cnot(2, 0);
  EXPECT_EQ(show(table.to_bool_bool()), "011 001 110");
  EXPECT_EQ(show(support::table(m).permute({1, 2, 0}).to_bool_bool()), "010 011 101");
  EXPECT_EQ(support::table(support::matrix({"01", "10"})).inverse(),
            support::table(support::matrix({"01", "10"})));
  EXPECT_FALSE(support::table(support::matrix({"10", "00"})).is_identity());
}

TEST(Table, GatesAtTheFrontActOnTheRight) {
  // (0,1) then (1,2) as gates at the front: the circuit (1,2), (0,1) from the identity.
  const std::vector gates{Gate::CNOT(0, 1), Gate("anything", {1, 2})};
  EXPECT_EQ(show(update_table(Table(3), gates).to_bool_bool()), "100 110 011");

  support::Rng rng(41);
  for (const int n : {2, 5, 64, 67}) {
    const BoolMatrix m = support::random_invertible(n, rng);
    Table table = support::table(m);
    Table inverse = table.inverse();
    EXPECT_EQ(support::multiply(inverse.to_bool_bool(), m), support::identity(n));
    const auto circuit = support::random_cnots(n, 3 * n, rng).to_circuit();
    for (const Gate& gate : circuit) inverse.cnot(gate.qbits[0], gate.qbits[1]);
    EXPECT_EQ(update_table(table, circuit), inverse.inverse());
  }
}

}  // namespace
