#include "zeltbraidwerk/linear/triangular_pairs.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "support/oracles.h"

namespace {

using namespace synthesis;
using support::at;
using support::matrix;
using testing::ElementsAre;
using testing::IsEmpty;
using Pairs = std::vector<std::tuple<int, int>>;

/// Entry (r, c) counted from the front, or both counted from the back: the upper triangle.
struct View {
  const BoolMatrix& m;
  bool upper;
  int n = static_cast<int>(m.size());
  int index(int i) const { return upper ? n - 1 - i : i; }
  bool operator()(int row, int step) const { return m[at(row)][at(index(step))]; }
};

/// Column by column, one entry at a time, on lists.
Pairs split(const View& m, int step, std::vector<int>& rows) {
  if (rows.size() < 2) return {};
  std::vector<int> zeros;
  std::vector<int> ones;
  for (const int r : rows) (m(r, step) ? ones : zeros).push_back(r);
  const Pairs a = split(m, step + 1, zeros);
  const Pairs b = split(m, step + 1, ones);
  Pairs pairs = a.size() > b.size() ? a : b;
  const Pairs& rest = a.size() > b.size() ? b : a;
  pairs.insert(pairs.end(), rest.begin(), rest.end());
  rows.clear();
  if (!zeros.empty() && !ones.empty()) {
    int stays = std::min(zeros[0], ones[0]);
    int goes = std::max(zeros[0], ones[0]);
    if (m.upper) std::swap(stays, goes);
    pairs.emplace_back(stays, goes);
    rows.push_back(stays);
  } else {
    rows = zeros.empty() ? ones : zeros;
  }
  return pairs;
}

Pairs column_pairs(const View& m, int step) {
  std::vector<int> rows;
  for (int k = step; k < m.n; ++k) {
    if (m(m.index(k), step)) rows.push_back(m.index(k));
  }
  return split(m, step + 1, rows);
}

std::tuple<int, int> best_pair(const View& m, int start) {
  std::vector<int> rows;
  for (int k = start; k < m.n; ++k) rows.push_back(m.index(k));
  for (int step = start; rows.size() > 2; ++step) {
    std::vector<int> kept;
    const auto with_one = std::ranges::count_if(rows, [&](int r) { return m(r, step); });
    for (const int r : rows) {
      if (m(r, step) == (with_one >= 2)) kept.push_back(r);
    }
    rows = kept;
  }
  return {rows[0], rows[1]};
}

Pairs eliminate(BoolMatrix m) {
  const int n = static_cast<int>(m.size());
  Pairs gates;
  const auto add = [&](int a, int b) {
    gates.emplace_back(a, b);
    support::add_row(m, a, b);
  };
  for (int i = 0; i < n; ++i) {
    if (!m[at(i)][at(i)]) {
      int best = -1;
      int longest = -1;
      for (int j = i + 1; j < n; ++j) {
        if (!m[at(j)][at(i)]) continue;
        int run = 0;
        while (i + 1 + run < n && m[at(j)][at(i + 1 + run)] == m[at(i)][at(i + 1 + run)]) ++run;
        if (run > longest) {
          longest = run;
          best = j;
        }
      }
      add(best, i);
    }
    for (const auto& [a, b] : column_pairs({m, false}, i)) add(a, b);
  }
  for (int k = 0; k < n; ++k) {
    for (const auto& [a, b] : column_pairs({m, true}, k)) add(a, b);
  }
  return gates;
}

TEST(TriangularPairs, MatchThePlainAlgorithmGateForGate) {
  support::Rng rng(1);
  for (int n = 0; n <= 70; ++n) {
    for (int round = 0; round < 5; ++round) {
      const BoolMatrix m = support::random_invertible(n, rng);
      BoolMatrix work = m;
      const auto circuit = GreedyGaussianElimination_faster(n, work);
      ASSERT_EQ(work, support::identity(n));
      ASSERT_EQ(circuit.gates, eliminate(m)) << support::show(m);
      ASSERT_TRUE(support::reduces(circuit, m));
    }
  }
}

TEST(TriangularPairs, RowsThatAgreeOverManyWordsAreToldApart) {
  // A unit triangle of ones but for a few places: rows share runs of more than a hundred columns.
  support::Rng rng(2);
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
    BoolMatrix work = m;
    EXPECT_EQ(GreedyGaussianElimination_faster(n, work).gates, eliminate(m));
  }
}

TEST(TriangularPairs, StepsMatchThePlainOnes) {
  support::Rng rng(3);
  for (int round = 0; round < 200; ++round) {
    const int n = 2 + static_cast<int>(rng() % 9);
    const BoolMatrix m = support::random_invertible(n, rng);
    const BoolMatrix wider = [&] {  // what lies beyond the size is not looked at
      BoolMatrix w = m;
      for (BoolRow& row : w) row.push_back(true);
      return w;
    }();
    std::vector<int> rows;
    for (int r = 0; r < n; ++r) {
      if (rng() % 3 != 0) rows.push_back(r);
    }
    for (const bool upper : {false, true}) {
      std::vector<int> expected = rows;
      std::vector<int> found = rows;
      const Pairs pairs = split({m, upper}, 0, expected);
      EXPECT_EQ((upper ? recursive_get_pairs_upper : recursive_get_pairs_lower)(n, wider, 0, found),
                pairs);
      EXPECT_EQ(found, expected);
      EXPECT_EQ((upper ? choose_best_pair_trig_upper : choose_best_pair_trig_lower)(n, m, 0),
                best_pair({m, upper}, 0));
    }
    EXPECT_EQ(get_pairs_lower(n, m, 0), column_pairs({m, false}, 0));
    EXPECT_EQ(get_pairs_upper(n, m, 0), column_pairs({m, true}, 0));
  }
}

TEST(TriangularPairs, PinnedOrders) {
  BoolMatrix m = matrix({"01", "11"});
  EXPECT_THAT(GreedyGaussianElimination_faster(2, m).gates,
              ElementsAre(std::tuple(1, 0), std::tuple(0, 1)));

  // Halves of equal length: the pair of the rows with a one first, that of the unmatched rows last.
  std::vector<int> rows{0, 1, 2, 3};
  EXPECT_THAT(recursive_get_pairs_lower(4, matrix({"0100", "1010", "0010", "1001"}), 0, rows),
              ElementsAre(std::tuple(1, 3), std::tuple(0, 2), std::tuple(0, 1)));
  EXPECT_THAT(rows, ElementsAre(0));
  // Three candidates, one of them with a one: the other two. All with a one: the next column.
  EXPECT_EQ(choose_best_pair_trig_lower(3, matrix({"000", "100", "010"}), 0), std::tuple(0, 2));
  EXPECT_EQ(choose_best_pair_trig_lower(3, matrix({"110", "100", "111"}), 0), std::tuple(0, 2));
  EXPECT_EQ(choose_best_pair_trig_upper(3, matrix({"001", "111", "010"}), 0), std::tuple(1, 0));
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
  std::vector<int> rows{2, 0, 1};
  EXPECT_THAT(recursive_get_pairs_lower(3, matrix({"111", "111", "111"}), 3, rows),
              ElementsAre(std::tuple(0, 1), std::tuple(0, 2)));
  rows.assign(1, 5);
  EXPECT_THAT(recursive_get_pairs_lower(2, matrix({"11", "11"}), 0, rows), IsEmpty());
  EXPECT_THAT(rows, ElementsAre(5));
}

}  // namespace
