#include <gtest/gtest.h>

#include <string>

#include "linear/plain_greedy.h"
#include "support/scripted_uniform.h"

namespace {

using namespace synthesis;
using plain::Cost;
using structures::CnotCircuit;
using support::at;
using support::matrix;

struct Search {
  const char* name;
  Cost cost;
  CnotCircuit (*run)(int n, BoolMatrix a, std::vector<int>& perm, int width, int depth);
};

CnotCircuit with_escape(int n, BoolMatrix a, std::vector<int>& perm, int width, int depth) {
  return greedy_synthesis_ones_with_escape(n, std::move(a), perm, width, depth, 0);
}

const Search searches[] = {{"ones", Cost::Ones, greedy_synthesis_ones},
                           {"inverse", Cost::Inverse, greedy_synthesis_ones_with_inv},
                           {"escape", Cost::Escape, with_escape},
                           {"log", Cost::Log, greedy_synthesis_log}};

/// Draws from a seeded engine and writes the bounds down.
struct Draws {
  explicit Draws(std::uint_fast32_t seed) : rng(seed) {}
  int operator()(int a, int b) {
    asked += std::to_string(a) + '-' + std::to_string(b) + ' ';
    return a + static_cast<int>(rng() % at(b - a + 1));
  }

  support::Rng rng;
  std::string asked;
};

/// Runs the search with the draws of a seeded engine.
CnotCircuit run(const Search& search, const BoolMatrix& a, std::vector<int>& perm, plain::Beam beam,
                Draws& draws) {
  support::uniform_script = std::ref(draws);
  testing::internal::CaptureStdout();
  const auto circuit = search.run(static_cast<int>(a.size()), a, perm, beam.width, beam.depth);
  testing::internal::GetCapturedStdout();
  return circuit;
}

void expect_gate_for_gate(const Search& search, const BoolMatrix& a, plain::Beam beam,
                          std::uint_fast32_t seed) {
  SCOPED_TRACE(std::string(search.name) + " n=" + std::to_string(a.size()) +
               " width=" + std::to_string(beam.width) + " depth=" + std::to_string(beam.depth) +
               " seed=" + std::to_string(seed));
  std::vector<int> perm(a.size(), -7);
  std::vector<int> plain_perm = perm;
  Draws draws(seed);
  Draws plain_draws(seed);
  const CnotCircuit circuit = run(search, a, perm, beam, draws);
  EXPECT_EQ(circuit, plain::synthesize(search.cost, beam, a, plain_perm, std::ref(plain_draws)));
  EXPECT_EQ(perm, plain_perm);
  EXPECT_EQ(draws.asked, plain_draws.asked);
}

TEST(GreedySearch, GateForGateAndDrawForDraw) {
  support::Rng rng(31);
  for (const Search& search : searches) {
    for (const auto& [depth, width, largest] :
         {std::tuple{1, 1, 12}, {2, 1, 6}, {2, 3, 6}, {2, 200, 4}, {3, 2, 4}, {4, 2, 3}}) {
      for (int n = 2; n <= largest; ++n) {
        for (int repeat = 0; repeat < 3; ++repeat) {
          expect_gate_for_gate(search, support::random_invertible(n, rng), {width, depth}, rng());
        }
      }
    }
  }
}

}  // namespace
