#include "zeltbraidwerk/foundations/boolean_matrix.h"

#include <gtest/gtest.h>

#include <climits>

#include "support/digest.h"
#include "support/oracles.h"

namespace {

using support::at;
using support::matrix;
using support::show;

TEST(BooleanMatrix, OperationsSavingsAndCountsAgreeWithBitLoops) {
  support::Rng rng(11);
  const auto column = [](const BoolMatrix& m, int c, int n) {
    BoolRow bits;
    for (int r = 0; r < n; ++r) bits.push_back(m[at(r)][at(c)]);
    return static_cast<int>(std::count(bits.begin(), bits.end(), true));
  };
  for (const int n : {1, 5, 63, 64, 65, 130}) {
    const BoolMatrix m = support::random_matrix(n + 2, n + 2, rng);
    const auto row = [n](const BoolMatrix& a, int r) {
      return static_cast<int>(std::count(a[at(r)].begin(), a[at(r)].begin() + n, true));
    };
    for (int repeat = 0; repeat < 10; ++repeat) {
      const int i = static_cast<int>(rng() % at(n));
      const int j = static_cast<int>(rng() % at(n));
      BoolMatrix rows = m, upper = m, cols = m;
      RowOperation(rows, i, j, n);
      const int from = repeat == 0 ? n : i;  // a source at or beyond the size does nothing
      RowOperation_upper(upper, from, j, n);
      ColumnOperation(cols, i, j, n);
      for (int k = 0; k < n + 2; ++k) {
        const bool sum = m[at(j)][at(k)] != m[at(i)][at(k)];
        ASSERT_EQ(rows[at(j)][at(k)], k < n ? sum : m[at(j)][at(k)]);
        ASSERT_EQ(upper[at(j)][at(k)], k < n && k >= from ? sum : m[at(j)][at(k)]);
        ASSERT_EQ(cols[at(k)][at(j)], k < n ? m[at(k)][at(j)] != m[at(k)][at(i)] : m[at(k)][at(j)]);
      }
      EXPECT_EQ(SavingRowOperation(m, i, j, n), row(m, j) - row(rows, j));
      EXPECT_EQ(SavingColumnOperation(m, i, j, n), column(m, j, n) - column(cols, j, n));
    }
    int ones = 0;
    for (int r = 0; r < n; ++r) ones += row(m, r);
    EXPECT_EQ(count_bits(n, m), ones);
  }
}

TEST(BooleanMatrix, InverseAndInvertibility) {
  EXPECT_EQ(boolean_matrix_det(matrix({"010", "100", "101"}), 3), 1);
  EXPECT_EQ(boolean_matrix_det(matrix({"110", "110", "001"}), 3), 0);
  EXPECT_EQ(boolean_matrix_det({}, 0), 1);
  EXPECT_TRUE(boolean_matrix_inverse(0, {}).empty());
  EXPECT_TRUE(boolean_matrix_inverse(-1, {}).empty());
  // Column 0 is repaired by an addition, column 1 cannot be: what is left of the steps stands.
  EXPECT_EQ(show(boolean_matrix_inverse(3, matrix({"001", "101", "001"}))), "110 101 001");
  const BoolMatrix small = matrix({"001", "101", "001"}), of_small = matrix({"110", "101", "001"});
  BoolMatrix large = support::identity(150), left = large;
  for (std::size_t r = 0; r < 3; ++r) {
    std::copy(small[r].begin(), small[r].end(), large[r].begin());
    std::copy(of_small[r].begin(), of_small[r].end(), left[r].begin());
  }
  EXPECT_EQ(boolean_matrix_inverse(150, large), left);

  support::Rng rng(12);
  for (const int n : {1, 2, 5, 63, 64, 65, 130}) {
    BoolMatrix m = support::random_invertible(n, rng);
    const BoolMatrix inverse = boolean_matrix_inverse(n, m);
    EXPECT_EQ(support::multiply(inverse, m), support::identity(n)) << n;
    EXPECT_EQ(boolean_matrix_product(n, n, n, m, inverse), support::identity(n)) << n;
    EXPECT_EQ(boolean_matrix_det(m, n), 1);
    m[at(n - 1)] = n > 1 ? m[0] : BoolRow(1);
    EXPECT_EQ(boolean_matrix_det(m, n), 0);
  }
}

TEST(BooleanMatrix, ProductOfAnyShapes) {
  support::Rng rng(14);
  for (const int rows : {65, 140}) {
    for (const int inner : {0, 1, 5, 63, 64, 65, 130}) {
      const BoolMatrix a = support::random_matrix(rows, inner, rng);
      const BoolMatrix b = support::random_matrix(inner, 70, rng);
      EXPECT_EQ(boolean_matrix_product(rows, 70, inner, a, b),
                inner > 0 ? support::multiply(a, b) : BoolMatrix(at(rows), BoolRow(70)));
    }
  }
}

TEST(BooleanMatrix, LuPicksTheSparsestPivotAndFactorises) {
  support::Rng rng(13);
  support::Digest digest;
  for (int n = 0; n < 20; ++n) {
    const BoolMatrix m = support::random_invertible(n, rng);
    std::vector<int> p(at(n), -1), q(at(n), -1);
    const BoolMatrix factors = LU(m, n, p, q);
    digest.add(factors, p, q);
    BoolMatrix lower = support::identity(n), upper = lower, permuted = lower;
    for (int t = 0; t < n; ++t) {
      for (int s = 0; s < n; ++s) {
        permuted[at(t)][at(s)] = m[at(p[at(t)])][at(q[at(s)])];
        (t > s ? lower : upper)[at(t)][at(s)] = factors[at(p[at(t)])][at(q[at(s)])];
      }
    }
    EXPECT_EQ(support::multiply(lower, upper), permuted);
  }
  EXPECT_EQ(digest.text(), "41995545900a1e87");
}

TEST(BooleanMatrix, LuEndsWhereThereIsNoPivot) {
  std::vector<int> rows{7, 7, 7}, cols{8, 8, 8};
  LU(matrix({"011", "011", "000"}), 3, rows, cols);
  EXPECT_EQ(rows, (std::vector{0, 7, 7}));
  EXPECT_EQ(cols, (std::vector{1, 8, 8}));
}

TEST(BooleanMatrix, SmallHelpers) {
  EXPECT_EQ(findmax(2, {{-5, -3, 9}, {-2, -4, 9}}), -2);
  EXPECT_EQ(findmax(0, {{-5}}), -5);
  EXPECT_EQ(findmax_double(1, {{2.9}}), 2);
  EXPECT_EQ(findmax_double(1, {{-2.9}}), -2);
  EXPECT_EQ(findmax_double(2, {{-0.5, -1}, {-2, -3}}), 0);
  EXPECT_EQ(myPow(3, 5), 243);
  EXPECT_EQ(myPow(2, 31), INT_MIN);

  testing::internal::CaptureStdout();
  pretty_print(2, matrix({"101", "011", "111"}));
  pretty_print(0, {});
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "1 0 \n0 1 \n\n\n");
}

}  // namespace
