#include "zeltbraidwerk/foundations/table.h"

#include <gtest/gtest.h>

#include <sstream>

#include "support/oracles.h"

namespace {

using structures::Gate;
using structures::Table;
using support::at;
using support::show;

Table table_of(const BoolMatrix& m) {
  Table table(static_cast<int>(m.size()));
  table.bits.clear();
  for (const BoolRow& row : m) table.bits.insert(table.bits.end(), row.begin(), row.end());
  return table;
}

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
  Table table = table_of(m);
  EXPECT_FALSE(table.is_identity());
  table.swap_lines(0, 2);
  EXPECT_EQ(show(table.to_bool_bool()), "101 001 110");
  table.swap_lines(1, 1);
  table.cnot(2, 0);
  EXPECT_EQ(show(table.to_bool_bool()), "011 001 110");
  EXPECT_EQ(show(table_of(m).permute({1, 2, 0}).to_bool_bool()), "010 011 101");
  EXPECT_EQ(table_of(support::matrix({"01", "10"})).inverse(),
            table_of(support::matrix({"01", "10"})));
  EXPECT_FALSE(table_of(support::matrix({"10", "00"})).is_identity());
}

TEST(Table, GatesAtTheFrontActOnTheRight) {
  // (0,1) then (1,2) as gates at the front: the circuit (1,2), (0,1) from the identity.
  const std::vector gates{Gate::CNOT(0, 1), Gate("anything", {1, 2})};
  EXPECT_EQ(show(update_table(Table(3), gates).to_bool_bool()), "100 110 011");

  support::Rng rng(41);
  for (const int n : {2, 5, 64, 67}) {
    const BoolMatrix m = support::random_invertible(n, rng);
    Table table = table_of(m);
    Table inverse = table.inverse();
    EXPECT_EQ(support::multiply(inverse.to_bool_bool(), m), support::identity(n));
    std::vector<Gate> circuit;
    for (int k = 0; k < 3 * n; ++k) {
      const int a = static_cast<int>(rng() % at(n));
      circuit.push_back(Gate::CNOT(a, (a + 1 + static_cast<int>(rng() % at(n - 1))) % n));
      inverse.cnot(circuit.back().qbits[0], circuit.back().qbits[1]);
    }
    EXPECT_EQ(update_table(table, circuit), inverse.inverse());
  }
}

}  // namespace
