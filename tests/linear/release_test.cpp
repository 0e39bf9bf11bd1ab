// The greedy searches on random matrices of 0 to 64 qubits, verified by replay.
// ZELTBRAIDWERK_INSTANCES says how many of each size: few by default, more before a release.
#include <gtest/gtest.h>

#include <cstdlib>

#include "support/oracles.h"
#include "zeltbraidwerk/linear/internal/greedy.h"

namespace {

using support::at;
using zelt::braidwerk::internal::BitMatrix;
using zelt::braidwerk::internal::Control;
using zelt::braidwerk::internal::greedy_synthesis;
using zelt::braidwerk::internal::GreedyCost;
using zelt::braidwerk::internal::SeededDraw;

enum class Outcome { Right, Wrong, Unfinished };

struct Method {
  const char* name;
  int largest;          ///< size it is run on
  int always_finishes;  ///< up to this size
  Outcome (*run)(int n, const BoolMatrix& a, std::uint32_t seed);
};

template <GreedyCost cost, int width, int depth, int cap = 1000>
Outcome greedy(int n, const BoolMatrix& a, std::uint32_t seed) {
  std::vector<int> perm(at(n));
  Control control;
  control.max_operations = cap;
  const auto result =
      greedy_synthesis(BitMatrix::pack(a, n, n), perm, {.cost = cost, .beam = {width, depth}},
                       SeededDraw(seed, 0), control);
  if (!result.reduced) return Outcome::Unfinished;
  return support::implements_up_to(result.circuit, perm, a) ? Outcome::Right : Outcome::Wrong;
}

const Method methods[] = {
    {"ones", 64, 20, greedy<GreedyCost::Ones, 1, 1>},
    {"ones_ahead", 20, 0, greedy<GreedyCost::Ones, 2, 3>},
    {"ones_with_inverse", 64, 20, greedy<GreedyCost::OnesWithInverse, 1, 1>},
    {"ones_with_inverse_ahead", 40, 0, greedy<GreedyCost::OnesWithInverse, 3, 3>},
    {"ones_with_escape", 64, 30, greedy<GreedyCost::OnesWithEscape, 1, 1>},
    {"log", 64, 30, greedy<GreedyCost::Log, 1, 1, 3000>},
    {"log_ahead", 8, 0, greedy<GreedyCost::Log, 3, 2>},
};

class Release : public testing::TestWithParam<Method> {};

TEST_P(Release, VerifiedByReplay) {
  const Method& method = GetParam();
  const char* asked = std::getenv("ZELTBRAIDWERK_INSTANCES");
  const int instances = asked != nullptr ? std::atoi(asked) : 2;
  int finished = 0;
  for (int n = 0; n <= method.largest; ++n) {
    for (int k = 0; k < instances; ++k) {
      const auto seed = static_cast<std::uint32_t>(100'000 * n + k);
      support::Rng rng(seed);
      const Outcome outcome = method.run(n, support::random_invertible(n, rng), seed);
      ASSERT_NE(outcome, Outcome::Wrong) << "n=" << n << " seed=" << seed;
      ASSERT_FALSE(outcome == Outcome::Unfinished && n <= method.always_finishes)
          << "n=" << n << " seed=" << seed;
      finished += outcome == Outcome::Right;
    }
  }
  RecordProperty("finished", finished);
  std::printf("%d of %d finished\n", finished, (method.largest + 1) * instances);
}

INSTANTIATE_TEST_SUITE_P(Linear, Release, testing::ValuesIn(methods),
                         [](const auto& instance) { return std::string(instance.param.name); });

}  // namespace
