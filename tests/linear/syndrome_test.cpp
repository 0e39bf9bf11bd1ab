#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <stdexcept>

#include "support/digest.h"
#include "support/oracles.h"
#include "zeltbraidwerk/linear/internal/factor_decoding.h"
#include "zeltbraidwerk/linear/syndrome_decoding.h"
#include "zeltbraidwerk/linear/syndrome_synthesis.h"

namespace {

using namespace synthesis;
using support::at;
using support::matrix;
using testing::ElementsAre;
using testing::IsEmpty;
using Entries = std::vector<DecodingEntry>;

BoolRow bits(std::string_view text) {
  return matrix({text})[0];
}

void add(const BoolMatrix& h, int row, const std::vector<int>& idx, BoolRow& residual) {
  for (std::size_t b = 0; b < residual.size(); ++b) {
    residual[b] = residual[b] != h[at(row)][at(idx[b])];
  }
}

/// A solvable problem: unit rows among random ones, in columns of their own order.
struct Problem {
  BoolMatrix h;
  BoolRow s;
  std::vector<int> idx;

  Problem(int length, support::Rng& rng) {
    const int columns = length + 3;
    for (int c = 0; c < columns; ++c) idx.push_back(c);
    std::ranges::shuffle(idx, rng);
    const int others = static_cast<int>(rng() % 12);
    h = support::random_matrix(others + length, columns, rng);
    for (int b = 0; b < length; ++b) {
      std::fill(h[at(others + b)].begin(), h[at(others + b)].end(), false);
      h[at(others + b)][at(idx[at(b)])] = true;
    }
    std::ranges::shuffle(h, rng);
    s = support::random_matrix(1, length, rng)[0];
  }

  bool solved_by(const std::vector<int>& rows) const {
    BoolRow rest = s;
    for (const int row : rows) add(h, row, idx, rest);
    return std::ranges::count(rest, true) == 0;
  }
};

TEST(SyndromeDecoding, SolversSolveAndKeepTheirAnswers) {
  support::Rng rng(1);
  support::Digest answers;
  for (int round = 0; round < 600; ++round) {
    Problem p(round % 20 == 0 ? 70 : static_cast<int>(rng() % 14), rng);
    const int depth = 1 + static_cast<int>(rng() % 3);
    const int width = 1 + static_cast<int>(rng() % 4);
    const int length = static_cast<int>(p.s.size());
    const auto kept = SyndromeDecodingSolver_heuristic(p.h, p.s, length, depth, width, p.idx);
    ASSERT_TRUE(p.solved_by(kept));
    // With a depth of one, greedy steps over unit rows always lead down.
    const auto afresh = SyndromeDecodingSolver_heuristic_bis(p.h, p.s, length, 1, width, p.idx);
    ASSERT_TRUE(p.solved_by(afresh));
    answers.add(kept, afresh);
  }
  EXPECT_EQ(answers.text(), "6f33420fa5edac8b");
}

TEST(SyndromeDecoding, StepsKeepTheirQueues) {
  support::Rng rng(2);
  support::Digest queues;
  int open = 0;
  for (int round = 0; round < 200; ++round) {
    Problem p(4 + static_cast<int>(rng() % 10), rng);
    const int depth = static_cast<int>(rng() % 3);
    const int width = 1 + static_cast<int>(rng() % 3);
    const int length = static_cast<int>(p.s.size());
    Entries current(p.h.size() * 16), next(current.size()), scratch(p.h.size());
    std::vector<int> result{9};
    auto state =
        create_queues(p.h, p.s, length, depth, width, p.idx, current, next, scratch, result);
    for (int level = 0; level < 2 && !state.first; ++level) {
      current.resize(at(state.second));
      queues.add(current);
      current.resize(next.size());
      ++open;
      state = update_queues(p.h, p.s, length, depth, width, p.idx, current, next, scratch, result,
                            state.second);
    }
    queues.add(state, result);
  }
  EXPECT_GT(open, 50);
  EXPECT_EQ(queues.text(), "63ee6d8ca75bb1ee");
}

TEST(SyndromeDecoding, PinnedAnswers) {
  std::vector<int> idx{0, 1, 2};
  const BoolMatrix h = matrix({"110", "011", "001"});
  for (const auto solver :
       {SyndromeDecodingSolver_heuristic, SyndromeDecodingSolver_heuristic_bis}) {
    EXPECT_THAT(solver(h, bits("101"), 3, 1, 1, idx), ElementsAre(2, 0, 1, 2));
    EXPECT_THAT(solver(h, bits("101"), 3, 2, 3, idx), ElementsAre(0, 1));
    EXPECT_THAT(solver(h, bits("000"), 3, 2, 3, idx), IsEmpty());
  }
  EXPECT_TRUE(Compare({bits("100"), {}}, {bits("011"), {}}));
  EXPECT_FALSE(Compare({bits("100"), {}}, {bits("001"), {}}));
}

TEST(SyndromeDecoding, ASearchWithoutAnEndThrows) {
  std::vector<int> idx{0, 1, 2, 3};
  for (const auto solver :
       {SyndromeDecodingSolver_heuristic, SyndromeDecodingSolver_heuristic_bis}) {
    for (const auto& h : {BoolMatrix{}, matrix({"1100", "1010"}), matrix({"0000"})}) {
      for (const int depth : {1, 2, 3}) {
        EXPECT_THROW(solver(h, bits("0010"), 4, depth, 2, idx), std::runtime_error);
      }
    }
    // The sum of all three rows, but the best second step takes back the first.
    const BoolMatrix h = matrix({"1100", "0110", "1011"});
    EXPECT_THROW(solver(h, bits("0001"), 4, 1, 1, idx), std::runtime_error);
    EXPECT_EQ(solver(h, bits("0001"), 4, 3, 3, idx).size(), 3u);
  }
}

TEST(SyndromeSynthesis, InvertsAndKeepsItsGates) {
  support::Rng rng(3);
  support::Digest gates;
  for (int n = 1; n <= 20; ++n) {
    for (int round = 0; round < 8; ++round) {
      const BoolMatrix m = support::random_invertible(n, rng);
      const int width = 1 + round % 3;
      const int depth = 1 + round / 3 % 2;
      std::vector<int> perm(at(n));
      const auto circuit = SyndromeSynthesis(n, m, perm, width, depth);
      ASSERT_TRUE(support::inverts_up_to(circuit, perm, m)) << support::show(m);
      gates.add(circuit, perm);
    }
  }
  EXPECT_EQ(gates.text(), "c8a8a73a42f38222");
}

TEST(SyndromeSynthesis, EndsOnSingularInputAndWhenTold) {
  std::vector<int> perm(3);
  for (const auto& m : {matrix({"110", "110", "001"}), matrix({"000", "000", "000"})}) {
    EXPECT_EQ(SyndromeSynthesis(3, m, perm, 0, 0).nbqbits, 3);
  }
  using namespace zelt::braidwerk::internal;
  const std::atomic<bool> stop = true;
  Control control;
  control.stop = &stop;
  EXPECT_FALSE(
      decode_factors(BitMatrix::pack(matrix({"10", "11"}), 2, 2), perm, 2, 2, control).finished);
}

}  // namespace
