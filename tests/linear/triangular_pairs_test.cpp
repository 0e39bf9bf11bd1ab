#include "zeltbraidwerk/linear/triangular_pairs.h"

#include <gmock/gmock.h>

#include "support/digest.h"
#include "support/oracles.h"

namespace {

using namespace synthesis;
using support::at;
using support::matrix;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(TriangularPairs, ReduceAndKeepTheirGates) {
  support::Rng rng(1);
  support::Digest gates;
  for (int n = 0; n <= 70; ++n) {
    for (int round = 0; round < 5; ++round) {
      const BoolMatrix m = support::random_invertible(n, rng);
      BoolMatrix work = m;
      const auto circuit = GreedyGaussianElimination_faster(n, work);
      ASSERT_EQ(work, support::identity(n));
      ASSERT_TRUE(support::reduces(circuit, m));
      gates.add(circuit);
    }
  }
  // A unit triangle of ones but for a few places: rows share runs of more than a hundred columns.
  const int n = 150;
  for (int round = 0; round < 5; ++round) {
    BoolMatrix m = support::identity(n);
    for (int r = 0; r < n; ++r) {
      for (int c = r; c < n; ++c) m[at(r)][at(c)] = rng() % 60 != 0 || c == r;
    }
    for (int k = 0; k < 20; ++k) {
      const int r = static_cast<int>(rng() % at(n));
      support::add_row(m, r, (r + 7) % n);
    }
    gates.add(GreedyGaussianElimination_faster(n, m));
    EXPECT_EQ(m, support::identity(n));
  }
  EXPECT_EQ(gates.text(), "2b2fc1da9bc28d6c");
}

TEST(TriangularPairs, StepsKeepTheirPairs) {
  support::Rng rng(3);
  support::Digest pairs;
  for (int round = 0; round < 200; ++round) {
    const int n = 2 + static_cast<int>(rng() % 9);
    const BoolMatrix m = support::random_invertible(n, rng);
    BoolMatrix wider = m;  // what lies beyond the size is not looked at
    for (BoolRow& row : wider) row.push_back(true);
    std::vector<int> rows;
    for (int r = 0; r < n; ++r) {
      if (rng() % 3 != 0) rows.push_back(r);
    }
    std::vector<int> lower = rows, upper = rows;
    pairs.add(recursive_get_pairs_lower(n, wider, 0, lower), lower);
    pairs.add(recursive_get_pairs_upper(n, wider, 0, upper), upper);
    pairs.add(choose_best_pair_trig_lower(n, m, 0), choose_best_pair_trig_upper(n, m, 0));
    pairs.add(get_pairs_lower(n, m, 0), get_pairs_upper(n, m, 0));
  }
  EXPECT_EQ(pairs.text(), "6cd3b8c1386319a0");
}

TEST(TriangularPairs, GatesAreInTimeOrder) {
  BoolMatrix m = matrix({"01", "11"});
  EXPECT_THAT(GreedyGaussianElimination_faster(2, m).gates,
              ElementsAre(std::tuple(1, 0), std::tuple(0, 1)));
}

TEST(TriangularPairs, BadAndSmallInputEnds) {
  for (int n = 0; n <= 1; ++n) {
    BoolMatrix m = support::identity(n);
    EXPECT_THAT(GreedyGaussianElimination_faster(n, m).gates, IsEmpty());
    EXPECT_EQ(choose_best_pair_trig_lower(n, m, 0), std::tuple(-1, -1));
    EXPECT_EQ(choose_best_pair_trig_upper(n, m, 0), std::tuple(-1, -1));
  }
  support::Rng rng(4);
  for (const int n : {3, 65, 130}) {
    BoolMatrix twins(at(n), BoolRow(at(n), true));
    BoolMatrix singular = support::random_matrix(n, n, rng);
    singular[at(n - 1)] = singular[0];
    for (BoolMatrix m : {twins, singular, BoolMatrix(at(n), BoolRow(at(n)))}) {
      choose_best_pair_trig_lower(n, m, 0);
      choose_best_pair_trig_upper(n, m, 0);
      const BoolMatrix before = m;
      EXPECT_EQ(support::replayed(GreedyGaussianElimination_faster(n, m), before), m);
    }
  }
}

}  // namespace
