#include <gmock/gmock.h>

#include <cmath>

#include "support/digest.h"
#include "support/oracles.h"
#include "support/scripted_uniform.h"
#include "zeltbraidwerk/linear/synthesis.h"

namespace {

using namespace synthesis;
using support::at;
using support::matrix;
using testing::ElementsAre;

enum class Cost { Ones, Inverse, Escape, Log };

constexpr Operation none{-1, -1, false};

template <typename T>
using Table = std::vector<std::vector<T>>;

template <typename T>
Table<T> table(int n) {
  return Table<T>(at(n), std::vector<T>(at(n)));
}

void add_line(BoolMatrix& m, int from, int to, bool row) {
  if (row) return support::add_row(m, from, to);
  for (BoolRow& r : m) r[at(to)] = r[at(to)] != r[at(from)];
}

/// The tables of a matrix and what the step functions make of them.
struct Steps {
  explicit Steps(const BoolMatrix& m)
      : n(static_cast<int>(m.size())), a(m), b(boolean_matrix_inverse(n, m)) {
    create_cost_matrix_ones(n, a, r, c);
    create_cost_matrix_ones(n, b, ri, ci);
    create_cost_matrix_log(n, a, rl, cl);
  }

  std::vector<LogScoredOperation> candidates(Cost cost, int width, int depth) const {
    std::vector<ScoredOperation> out(1);
    std::vector<LogScoredOperation> log_out(1);
    int count = 0;
    switch (cost) {
      case Cost::Log:
        count = compute_available_operation_log(n, width, depth, a, rl, cl, log_out);
        return {log_out.begin(), log_out.begin() + count};
      case Cost::Inverse:
        count = compute_available_operation_ones_with_inv(n, width, depth, a, b, r, c, ri, ci, out);
        break;
      default:
        count = compute_available_operation_ones(n, width, depth, a, r, c, out);
    }
    return {out.begin(), out.begin() + count};
  }

  Operation next(Cost cost, int width, int depth) const {
    switch (cost) {
      case Cost::Log:
        return compute_next_operation_log(n, width, depth, a, rl, cl);
      case Cost::Inverse:
        return compute_next_operation_ones_with_inv(n, width, depth, a, b, r, c, ri, ci);
      case Cost::Escape:
        return compute_next_operation_ones_with_escape(n, width, depth, a, r, c);
      default:
        return compute_next_operation_ones(n, width, depth, a, r, c);
    }
  }

  int n;
  BoolMatrix a;
  BoolMatrix b;
  Table<int> r = table<int>(n), c = r, ri = r, ci = r;
  Table<double> rl = table<double>(n), cl = rl;
};

TEST(GreedySteps, CostTablesFromScratchAndKeptUp) {
  support::Rng rng(81);
  support::Digest digest;
  for (const int n : {0, 1, 2, 3, 5, 16, 17, 40, 66, 130}) {
    BoolMatrix a = support::random_invertible(n, rng);
    Steps steps(a);
    for (int k = 0; n > 1 && k < 20; ++k) {
      const int i = static_cast<int>(rng() % at(n));
      const int j = (i + 1 + static_cast<int>(rng() % at(n - 1))) % n;
      const bool row = rng() & 1;
      add_line(a, i, j, row);
      update_cost_matrix_ones(n, i, j, row, a, steps.r, steps.c);
    }
    const Steps fresh(a);
    EXPECT_EQ(steps.r, fresh.r) << n;
    EXPECT_EQ(steps.c, fresh.c) << n;
    digest.add(fresh.r, fresh.c);
    BoolMatrix same = a;
    update_cost_matrix_log(n, 0, 1, true, same, steps.rl, steps.cl);
    EXPECT_EQ(steps.rl, fresh.rl) << n;
    EXPECT_EQ(steps.cl, fresh.cl) << n;
    EXPECT_EQ(same, a);
  }
  EXPECT_EQ(digest.text(), "5bd128385872f5a4");
}

TEST(GreedySteps, CandidatesInOrderAndTheirChoice) {
  support::Rng rng(82);
  support::Digest digest;
  for (const Cost cost : {Cost::Ones, Cost::Inverse, Cost::Escape, Cost::Log}) {
    for (const auto& [depth, width, largest] :
         {std::tuple{0, 0, 9}, {1, 1, 9}, {2, 1, 6}, {2, 4, 6}, {3, 2, 4}, {3, 50, 3}}) {
      for (int n = 2; n <= largest; ++n) {
        const Steps steps(support::random_invertible(n, rng));
        for (const auto& [score, operation] : steps.candidates(cost, width, depth)) {
          digest.add(std::llround(1e6 * score), operation);
        }
        support::uniform_script = [engine = support::Rng(rng())](int low, int high) mutable {
          return low + static_cast<int>(engine() % at(high - low + 1));
        };
        digest.add(steps.next(cost, width, depth));
      }
    }
  }
  for (const int n : {12, 40, 64, 70}) {
    const Steps steps(support::random_invertible(n, rng));
    const auto children = steps.candidates(Cost::Ones, 2 * n * n, 2);
    ASSERT_EQ(children.size(), at(2 * n * (n - 1)));
    digest.add(children);
  }
  EXPECT_EQ(digest.text(), "911d612ec5727b03");
}

TEST(GreedySteps, AReducingPathIsTheOnlyCandidate) {
  // One column addition can mend many rows, if they are equal.
  EXPECT_THAT(Steps(matrix({"11", "11"})).candidates(Cost::Ones, 1, 2),
              ElementsAre(LogScoredOperation{0, {0, 1, false}}));
  EXPECT_THAT(Steps(matrix({"100", "011", "001"})).candidates(Cost::Log, 3, 3),
              ElementsAre(LogScoredOperation{0, {1, 2, false}}));
}

TEST(GreedySteps, TwoRowsInTheOrderOfCandidates) {
  const Steps steps(matrix({"11", "01"}));
  EXPECT_THAT(
      steps.candidates(Cost::Ones, 9, 1),
      ElementsAre(LogScoredOperation{3, {0, 1, true}}, LogScoredOperation{2, {0, 1, false}},
                  LogScoredOperation{2, {1, 0, true}}, LogScoredOperation{3, {1, 0, false}}));
  for (const int draw : {0, 1}) {
    support::uniform_script = [draw](int a, int b) {
      EXPECT_EQ(a, 0);
      EXPECT_EQ(b, 1);
      return draw;
    };
    EXPECT_EQ(steps.next(Cost::Ones, 1, 1),
              draw == 0 ? Operation(0, 1, false) : Operation(1, 0, true));
    std::vector<int> perm(2);
    EXPECT_EQ(support::show(greedy_synthesis_ones(2, steps.a, perm, 1, 1).gates), "(1,0)");
    EXPECT_THAT(perm, ElementsAre(0, 1));
  }
}

TEST(GreedySteps, LogCostsTieWithinATolerance) {
  const BoolMatrix a = matrix({"110", "011", "001"});
  const double base = 2 * std::log(2);  // the cost of a
  Table<double> r = table<double>(3);
  Table<double> c = r;
  for (Table<double>* savings : {&r, &c}) {
    for (auto& row : *savings) row.assign(3, base - 9);
  }
  r[2][1] = base - 1;           // the best
  c[0][2] = base - 1 - 0.5e-5;  // ties
  c[1][2] = base - 1 - 1.5e-5;  // does not tie, though it is near the second
  for (const int draw : {0, 1}) {
    support::uniform_script = [draw](int, int high) {
      EXPECT_EQ(high, 1);
      return draw;
    };
    EXPECT_EQ(compute_next_operation_log(3, 1, 1, a, r, c),
              draw == 0 ? Operation(2, 1, true) : Operation(0, 2, false));
  }
}

TEST(GreedySteps, NothingToChooseFrom) {
  support::uniform_script = [](int, int) {
    ADD_FAILURE() << "nothing to draw";
    return 0;
  };
  for (const Cost cost : {Cost::Ones, Cost::Inverse, Cost::Escape, Cost::Log}) {
    for (const int n : {0, 1}) {
      for (const int depth : {1, 2, 1 << 30}) {
        EXPECT_EQ(Steps(support::identity(n)).next(cost, 1, depth), none);
      }
    }
    EXPECT_EQ(Steps(matrix({"110", "011", "101"})).next(cost, 0, 2), none);
  }
}

TEST(GreedySteps, ConversionRelabelsTheRowGates) {
  const structures::CnotCircuit rows(3, {{0, 1}, {1, 2}});
  const structures::CnotCircuit columns(4, {{2, 0}});
  const auto joined = conversion(rows, columns, {2, 0, 1});
  EXPECT_EQ(joined, structures::CnotCircuit(4, {{2, 0}, {0, 1}, {2, 0}}));
}

}  // namespace
