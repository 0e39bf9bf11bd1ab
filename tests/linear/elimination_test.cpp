#include <gtest/gtest.h>

#include <map>

#include "support/oracles.h"
#include "zeltbraidwerk/linear/synthesis.h"

namespace {

using namespace synthesis;
using structures::CnotCircuit;
using support::at;
using support::matrix;
using support::show;

/// A matrix under reduction, a bit at a time.
struct Rows {
  int n;
  BoolMatrix m;
  CnotCircuit circuit{n};

  bool bit(int r, int c) const { return m[at(r)][at(c)]; }
  void add(int from, int to) { add(from, to, 0); }
  void add_upper(int from, int to) { add(from, to, from); }
  void add(int from, int to, int first) {
    circuit.addGate(from, to);
    for (int c = first; c < n; ++c) m[at(to)][at(c)] = bit(to, c) != bit(from, c);
  }
};

CnotCircuit plain_gauss(int n, const BoolMatrix& m) {
  Rows rows{n, m};
  for (int i = 0; i < n; ++i) {
    for (int j = i + 1; j < n && !rows.bit(i, i); ++j) {
      if (rows.bit(j, i)) rows.add(j, i);
    }
    for (int j = i + 1; j < n; ++j) {
      if (rows.bit(j, i)) rows.add(i, j);
    }
  }
  for (int c = n - 1; c > 0; --c) {
    for (int r = c - 1; r >= 0; --r) {
      if (rows.bit(r, c)) rows.add_upper(c, r);
    }
  }
  return rows.circuit;
}

CnotCircuit plain_pmh(int n, const BoolMatrix& m, int section) {
  Rows rows{n, m};
  bool repair = false;
  for (int s = 0; s < n; s += section) {
    const int e = std::min(s + section, n);
    std::map<BoolRow, int> first;
    for (int r = s; r < n; ++r) {
      const BoolRow p(rows.m[at(r)].begin() + s, rows.m[at(r)].begin() + e);
      const auto [entry, is_new] = first.try_emplace(p, r);
      if (!is_new && p != BoolRow(p.size())) rows.add(entry->second, r);
    }
    for (int c = s; c < e; ++c) {
      if (!rows.bit(c, c)) repair = true;
      for (int r = c + 1; r < n; ++r) {
        if (!rows.bit(r, c)) continue;
        if (repair) rows.add(r, c);
        rows.add(c, r);
        repair = false;
      }
    }
  }
  for (int s = 0; s < n; s += section) {
    const int e = std::min(s + section, n);
    std::map<BoolRow, int> first;
    for (int r = n - 1 - s; r >= 0; --r) {
      const BoolRow p(rows.m[at(r)].begin() + n - e, rows.m[at(r)].begin() + n - s);
      const auto [entry, is_new] = first.try_emplace(p, r);
      if (!is_new && p != BoolRow(p.size())) rows.add_upper(entry->second, r);
    }
    for (int c = n - 1 - s; c >= n - e; --c) {
      for (int r = c - 1; r >= 0; --r) {
        if (rows.bit(r, c)) rows.add_upper(c, r);
      }
    }
  }
  return rows.circuit;
}

TEST(Elimination, WorkedExamples) {
  EXPECT_EQ(show(GaussianElimination(2, matrix({"11", "01"})).gates), "(1,0)");
  const BoolMatrix swap = matrix({"01", "10"});
  EXPECT_EQ(show(GaussianElimination(2, swap).gates), "(1,0)(0,1)(1,0)");
  EXPECT_EQ(show(PMH_Algorithm(2, swap, 1).gates), "(1,0)(0,1)(1,0)");
  // Row 3 goes with row 1, then row 1 with row 2; row 2 has its diagonal repaired by row 3.
  EXPECT_EQ(show(PMH_Algorithm(4, matrix({"1011", "0110", "1100", "0101"}), 2).gates),
            "(1,3)(0,2)(1,2)(3,2)(2,3)(2,1)(3,0)(2,0)");

  // A cycle of three: the circuit is of the inverse, and reversed of the matrix itself.
  const BoolMatrix cycle = matrix({"010", "001", "100"});
  for (CnotCircuit circuit : {GaussianElimination(3, cycle), PMH_Algorithm(3, cycle, 2),
                              optimized_PMH_Algorithm(3, cycle)}) {
    EXPECT_EQ(show(circuit.Simulate()), "001 100 010");
    circuit.reverse();
    EXPECT_EQ(circuit.Simulate(), cycle);
  }
}

TEST(Elimination, GateForGateAndReduces) {
  support::Rng rng(71);
  // Many of size 4: sections of equal count are common there, and the smaller one wins.
  std::vector<int> sizes{1, 2, 3, 5, 8, 13, 31, 64, 65, 130};
  sizes.insert(sizes.end(), 50, 4);
  for (const int n : sizes) {
    const BoolMatrix m = support::random_invertible(n, rng);
    const CnotCircuit gauss = GaussianElimination(n, m);
    EXPECT_EQ(gauss, plain_gauss(n, m)) << n;
    EXPECT_TRUE(support::reduces(gauss, m)) << n;

    CnotCircuit best;
    for (const int section : {1, 2, 3, 4, 5, 6, 7, 11, 30}) {
      const CnotCircuit circuit = PMH_Algorithm(n, m, section);
      EXPECT_EQ(circuit, plain_pmh(n, m, section)) << n << ' ' << section;
      EXPECT_TRUE(support::reduces(circuit, m)) << n << ' ' << section;
      if (n < 1 << section) continue;
      if (section == 1 || circuit.gates.size() < best.gates.size()) best = circuit;
    }
    EXPECT_EQ(optimized_PMH_Algorithm(n, m), best) << n;
  }
}

TEST(Elimination, SingularMatricesEndAsTheUncheckedStepsDo) {
  support::Rng rng(72);
  for (const int n : {2, 5, 9, 66}) {
    for (int repeat = 0; repeat < 20; ++repeat) {
      BoolMatrix m = support::random_matrix(n, n, rng);
      m[rng() % at(n)] = repeat % 2 ? m[0] : BoolRow(at(n));
      for (BoolRow& row : m) row[rng() % at(n)] = false;
      EXPECT_EQ(GaussianElimination(n, m), plain_gauss(n, m));
      for (const int section : {1, 3, 4}) {
        EXPECT_EQ(PMH_Algorithm(n, m, section), plain_pmh(n, m, section));
      }
    }
  }
}

TEST(Elimination, NothingToDoAndOddSections) {
  for (const int n : {-1, 0, 1, 5}) {
    const BoolMatrix m = support::identity(std::max(n, 0));
    EXPECT_EQ(GaussianElimination(n, m), CnotCircuit(n));
    for (const int section : {-3, 0, 1, 3, 30, 1 << 30}) {
      EXPECT_EQ(PMH_Algorithm(n, m, section), CnotCircuit(n));
    }
    EXPECT_EQ(optimized_PMH_Algorithm(n, m), n < 2 ? CnotCircuit() : CnotCircuit(n));
  }
  EXPECT_EQ(PMH_Algorithm(1, {{false}}, 1), CnotCircuit(1));
  EXPECT_THROW(PMH_Algorithm(31, support::identity(31), 31), std::length_error);
}

}  // namespace
