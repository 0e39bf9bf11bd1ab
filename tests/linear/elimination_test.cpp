#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

#include "support/digest.h"
#include "support/oracles.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/linear/internal/path_sorting.h"
#include "zeltbraidwerk/linear/search/internal/device_starts.h"
#include "zeltbraidwerk/linear/search/internal/map_circuits.h"
#include "zeltbraidwerk/linear/synthesis.h"

namespace {

using namespace synthesis;
using structures::CnotCircuit;
using support::at;
using support::matrix;
using support::show;
using namespace zelt::braidwerk::internal;

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

TEST(Elimination, ReducesAndKeepsItsGates) {
  support::Rng rng(71);
  support::Digest gates;
  // Many of size 4: sections of equal count are common there, and the smaller one wins.
  std::vector<int> sizes{1, 2, 3, 5, 8, 13, 31, 64, 65, 130};
  sizes.insert(sizes.end(), 50, 4);
  for (const int n : sizes) {
    const BoolMatrix m = support::random_invertible(n, rng);
    const CnotCircuit gauss = GaussianElimination(n, m);
    gates.add(gauss);
    EXPECT_TRUE(support::reduces(gauss, m)) << n;

    CnotCircuit best;
    for (const int section : {1, 2, 3, 4, 5, 6, 7, 11, 30}) {
      const CnotCircuit circuit = PMH_Algorithm(n, m, section);
      gates.add(circuit);
      EXPECT_TRUE(support::reduces(circuit, m)) << n << ' ' << section;
      if (n < 1 << section) continue;
      if (section == 1 || circuit.gates.size() < best.gates.size()) best = circuit;
    }
    EXPECT_EQ(optimized_PMH_Algorithm(n, m), best) << n;
  }
  EXPECT_EQ(gates.text(), "2a8994995e1c8bf0");
}

TEST(PathSorting, ReducesInFiveLayersPerQubit) {
  support::Rng rng(73);
  for (const int n : {1, 2, 3, 4, 5, 6, 9, 16, 40, 63, 64, 65, 130}) {
    std::vector<int> path(at(n));
    std::iota(path.begin(), path.end(), 0);
    std::ranges::shuffle(path, rng);
    std::vector<BoolMatrix> matrices{support::identity(n)};
    for (int k = 0; k < (n < 20 ? 40 : 2); ++k)
      matrices.push_back(support::random_invertible(n, rng));
    for (const BoolMatrix& m : matrices) {
      for (const int first : {0, 1}) {
        const auto circuit = sort_along_path(BitMatrix::pack(m, n, n), path, first, {});
        ASSERT_TRUE(circuit);
        EXPECT_TRUE(support::reduces(*circuit, m)) << n;
        std::vector<int> layers(at(n));
        for (const auto& [c, t] : circuit->gates) {
          const auto place = std::ranges::find(path, c);
          EXPECT_TRUE((place != path.begin() && place[-1] == t) ||
                      (place + 1 != path.end() && place[1] == t));
          layers[at(c)] = layers[at(t)] = std::max(layers[at(c)], layers[at(t)]) + 1;
        }
        EXPECT_LE(std::ranges::max(layers), 5 * n);
      }
    }
  }
}

TEST(PlaneSorting, MakesCircuitsOfMapsAlongPaths) {
  support::Rng rng(74);
  zelt::braidwerk::internal::Rng draws(1, 1);
  const Effort unlimited;
  Meter meter(unlimited);
  for (const int n : {1, 2, 3, 4, 5, 9, 31, 32, 33, 65}) {
    std::vector<int> path(at(n));
    std::iota(path.begin(), path.end(), 0);
    std::ranges::shuffle(path, rng);
    for (int run = 0; run < (n < 10 ? 40 : 4); ++run) {
      const BoolMatrix m = run == 0 ? support::identity(n) : support::random_invertible(n, rng);
      const auto list =
          sorted_by_planes(BitMatrix::pack(m, n, n), run % 2 == 1, path, 1 + run % 3, draws, meter);
      ASSERT_TRUE(list);
      const auto circuit = free_circuit(*list).circuit;
      EXPECT_EQ(circuit.Simulate(), m) << n;
      for (const auto& [c, t] : circuit.gates) {
        const auto place = std::ranges::find(path, c);
        EXPECT_TRUE((place != path.begin() && place[-1] == t) ||
                    (place + 1 != path.end() && place[1] == t));
      }
      EXPECT_LE(size_of(*list).depth, 6 * n);
    }
  }
}

TEST(Elimination, SingularMatricesEndAsTheUncheckedStepsDo) {
  support::Rng rng(72);
  support::Digest gates;
  for (const int n : {2, 5, 9, 66}) {
    for (int repeat = 0; repeat < 20; ++repeat) {
      BoolMatrix m = support::random_matrix(n, n, rng);
      m[rng() % at(n)] = repeat % 2 ? m[0] : BoolRow(at(n));
      for (BoolRow& row : m) row[rng() % at(n)] = false;
      gates.add(GaussianElimination(n, m));
      for (const int section : {1, 3, 4}) gates.add(PMH_Algorithm(n, m, section));
    }
  }
  EXPECT_EQ(gates.text(), "d9a954a312c193ed");
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
