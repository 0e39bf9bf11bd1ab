#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "support/digest.h"
#include "support/oracles.h"
#include "support/scripted_uniform.h"
#include "zeltbraidwerk/linear/internal/greedy.h"
#include "zeltbraidwerk/linear/synthesis.h"

namespace {

using namespace synthesis;
using structures::CnotCircuit;
using support::at;
using support::matrix;

struct Search {
  const char* digest;  ///< of what it gives, with the draws that it asks for
  CnotCircuit (*run)(int n, BoolMatrix a, std::vector<int>& perm, int width, int depth);
};

CnotCircuit with_escape(int n, BoolMatrix a, std::vector<int>& perm, int width, int depth) {
  return greedy_synthesis_ones_with_escape(n, std::move(a), perm, width, depth, 0);
}

const Search searches[] = {{"693f5df227a13c14", greedy_synthesis_ones},
                           {"94723378ae214277", greedy_synthesis_ones_with_inv},
                           {"c2a3b1b7637e6642", with_escape},
                           {"b236b265cc5d3d84", greedy_synthesis_log}};

/// Draws from a seeded engine and writes down what was asked.
struct Draws {
  explicit Draws(std::uint_fast32_t seed) : rng(seed) {}
  int operator()(int a, int b) {
    asked += std::to_string(a) + '-' + std::to_string(b) + ' ';
    return a + static_cast<int>(rng() % at(b - a + 1));
  }

  support::Rng rng;
  std::string asked;
};

/// Runs the search with these draws. Returns the circuit and what was written to standard output.
std::pair<CnotCircuit, std::string> run(const Search& search, const BoolMatrix& a,
                                        std::vector<int>& perm, int width, int depth,
                                        Draws& draws) {
  support::uniform_script = std::ref(draws);
  testing::internal::CaptureStdout();
  auto circuit = search.run(static_cast<int>(a.size()), a, perm, width, depth);
  return {std::move(circuit), testing::internal::GetCapturedStdout()};
}

TEST(GreedySearch, ReducesAndKeepsItsGatesAndDraws) {
  for (const Search& search : searches) {
    support::Rng rng(31);
    support::Digest digest;
    std::size_t most_said = 0;
    const auto add = [&](const BoolMatrix& a, int width, int depth) {
      std::vector<int> perm(a.size(), -7);
      Draws draws(rng());
      const auto [circuit, said] = run(search, a, perm, width, depth, draws);
      // The log search may go in circles when it looks ahead, and then ends at 1000 gates.
      EXPECT_TRUE(circuit.gates.size() >= 1000 || support::implements_up_to(circuit, perm, a))
          << a.size() << ' ' << depth;
      digest.add(circuit, perm, draws.asked, said);
      most_said = std::max(most_said, said.size());
    };
    for (const auto& [depth, width, largest] :
         {std::tuple{1, 1, 12}, {2, 1, 5}, {2, 3, 6}, {2, 200, 4}, {3, 2, 4}, {4, 2, 3}}) {
      for (int n = 2; n <= largest; ++n) {
        for (int repeat = 0; repeat < 2; ++repeat) {
          add(support::random_invertible(n, rng), width, depth);
        }
      }
    }
    for (int n = 13; n <= 30; ++n) add(support::random_invertible(n, rng), 1, 1);
    BoolMatrix more_than_a_word = support::identity(66);
    std::ranges::shuffle(more_than_a_word, rng);
    for (int k = 0; k < 3; ++k) {
      support::add_row(more_than_a_word, 62 + k, static_cast<int>(rng() % 60));
    }
    add(more_than_a_word, 1, 1);
    EXPECT_EQ(digest.text(), search.digest);
    // Only the search with escapes says something: here it went in twice at least.
    EXPECT_EQ(most_said > std::string("On rentre au niveau 1\n").size(), &search == &searches[2]);
  }
}

TEST(GreedySearch, PermutationsNeedNoGateAndNoDraw) {
  support::uniform_script = [](int, int) {
    ADD_FAILURE() << "no draw is due";
    return 0;
  };
  for (const Search& search : searches) {
    std::vector<int> none;
    EXPECT_EQ(search.run(0, {}, none, 1, 1), CnotCircuit(0));
    std::vector<int> perm(4, 7);
    const BoolMatrix cycle = matrix({"0100", "0010", "0001", "1000"});
    EXPECT_EQ(search.run(4, cycle, perm, 1, 2), CnotCircuit(4));
    EXPECT_EQ(perm, (std::vector{1, 2, 3, 0}));
    // A row without a one leaves its place.
    EXPECT_EQ(search.run(2, matrix({"00", "10"}), perm, 1, 1), CnotCircuit(2));
    EXPECT_EQ(perm, (std::vector{1, 0, 3, 0}));
  }
}

TEST(GreedySearch, SingularMatricesEnd) {
  support::Rng rng(33);
  Draws draws(34);
  for (const Search& search : searches) {
    for (const int n : {1, 2, 3, 6, 11}) {
      for (const int depth : {1, 2}) {
        BoolMatrix a = support::random_matrix(n, n, rng);
        a[rng() % at(n)] = depth == 1 ? BoolRow(at(n)) : a[0];
        std::vector<int> perm(at(n));
        EXPECT_LE(run(search, a, perm, 2, depth, draws).first.gates.size(), 21'000u);
      }
    }
  }
}

TEST(GreedySearch, EscapesNestAndEndAtTheLastLevel) {
  // No single addition makes it sparser.
  const BoolMatrix stalled = matrix({"1100", "0110", "1011", "0101"});
  std::vector<int> perm(4);
  Draws draws(1);
  EXPECT_EQ(run(searches[2], stalled, perm, 1, 1, draws).second, "On rentre au niveau 1\n");
  testing::internal::CaptureStdout();
  EXPECT_EQ(greedy_synthesis_ones_with_escape(4, stalled, perm, 1, 1, 20), CnotCircuit(4));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(Pathfinding, SelectsTheSearchAndKeepsTheFirstOfTheShortest) {
  support::Rng rng(36);
  const int n = 9;
  const BoolMatrix a = support::random_invertible(n, rng);
  struct Choice {
    std::string cost;
    bool with_inverse;
    bool escape;
    int search;
  };
  for (Choice choice : {Choice{"ones", false, false, 0},
                        {"ones", true, false, 1},
                        {"ones", false, true, 2},
                        {"ones", true, true, 2},
                        {"log", false, false, 3},
                        {"log", true, true, 3}}) {
    for (const int restarts : {-1, 0, 1, 12}) {
      Draws draws(37);
      CnotCircuit best;
      std::vector<int> best_perm;
      for (int k = 0; k < std::max(restarts, 1); ++k) {
        std::vector<int> perm(at(n));
        const CnotCircuit circuit = run(searches[choice.search], a, perm, 2, 1, draws).first;
        if (k > 0 && circuit.gates.size() >= best.gates.size()) continue;
        best = circuit;
        best_perm = perm;
      }
      Draws again(37);
      support::uniform_script = std::ref(again);
      std::vector<int> perm(at(n) + 1, -1);
      testing::internal::CaptureStdout();
      EXPECT_EQ(pathfinding_synthesis(n, a, perm, choice.cost.data(), choice.with_inverse, 2, 1,
                                      restarts, choice.escape),
                best);
      testing::internal::GetCapturedStdout();
      EXPECT_EQ(perm.back(), -1);
      perm.pop_back();
      EXPECT_EQ(perm, best_perm);
      EXPECT_EQ(again.asked, draws.asked);
    }
  }
}

static_assert(std::is_same_v<decltype(pathfinding_synthesis),
                             CnotCircuit(int, const BoolMatrix&, std::vector<int>&, char*, bool,
                                         int, int, int, bool)>);

TEST(Pathfinding, OtherNamesRunNothing) {
  for (std::string name : {"", "Ones", "ones ", "one", "LOG", "logs"}) {
    std::vector<int> perm{5, 6};
    EXPECT_EQ(
        pathfinding_synthesis(2, matrix({"11", "01"}), perm, name.data(), false, 1, 1, 3, false),
        CnotCircuit());
    EXPECT_EQ(perm, (std::vector{5, 6}));
  }
}

using namespace zelt::braidwerk::internal;

TEST(GreedyKernel, StopsWhereItsCallerSays) {
  support::Rng rng(38);
  const int n = 24;
  const BitMatrix a = support::packed(support::random_invertible(n, rng));
  for (const GreedyCost cost : {GreedyCost::Ones, GreedyCost::OnesWithInverse,
                                GreedyCost::OnesWithEscape, GreedyCost::Log}) {
    for (const int depth : {1, 2}) {
      const GreedyOptions options{.cost = cost, .beam = {1, depth}};
      std::vector<int> perm(at(n));
      std::atomic<bool> stop = true;
      Control stopped;
      stopped.stop = &stop;
      GreedyResult result = greedy_synthesis(a, perm, options, SeededDraw(1, 0), stopped);
      EXPECT_FALSE(result.reduced);
      EXPECT_EQ(result.circuit, CnotCircuit(n));

      Control capped;
      capped.max_operations = 3;
      result = greedy_synthesis(a, perm, options, SeededDraw(1, 0), capped);
      EXPECT_FALSE(result.reduced);
      EXPECT_EQ(result.circuit.gates.size(), 3u);

      Control late;
      late.deadline = Control::Clock::now();
      EXPECT_EQ(greedy_synthesis(a, perm, options, SeededDraw(1, 0), late).circuit, CnotCircuit(n));

      if (depth == 2) continue;
      testing::internal::CaptureStdout();
      result = greedy_synthesis(a, perm, options, SeededDraw(1, 0), Control{});
      EXPECT_TRUE(result.reduced);
      EXPECT_TRUE(support::implements_up_to(result.circuit, perm, a.unpack()));
      EXPECT_EQ(greedy_synthesis(a, perm, options, SeededDraw(1, 0), Control{}).circuit,
                result.circuit);
      EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    }
  }
}

}  // namespace
