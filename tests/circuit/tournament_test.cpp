#include "zeltbraidwerk/circuit/search/internal/tournament.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using zelt::braidwerk::internal::play_tournament;
using zelt::braidwerk::internal::rounds_within;
using zelt::braidwerk::internal::tournament_length;

// Circuits are their counts, and walks take out what is listed. The second walk of the first pair
// is the better one, and the first of the next.
TEST(Tournament, GoesOnFromTheBetterOfTwo) {
  const std::vector<int> taken_out{3, 5, 1, 6, 2, 4, 1};
  std::vector<std::pair<int, int>> walks;  // start and round
  const int end = play_tournament(
      20, 2, [](int count) { return count; },
      [&](int from, int round) {
        walks.emplace_back(from, round);
        return from - taken_out[walks.size() - 1];
      });
  using W = std::pair<int, int>;
  EXPECT_THAT(walks,
              ElementsAre(W{20, 0}, W{20, 0}, W{15, 1}, W{20, 0}, W{20, 0}, W{14, 1}, W{10, 2}));
  EXPECT_EQ(end, 9);
}

TEST(Tournament, TakesTheLengthThatIsPlanned) {
  for (const double growth : {1.5, 3.0}) {
    for (int rounds = 0; rounds < 7; ++rounds) {
      double length = 0;
      play_tournament(
          0, rounds, [](int count) { return count; },
          [&](int from, int round) {
            length += std::pow(growth, round);
            return from;
          });
      EXPECT_DOUBLE_EQ(tournament_length(rounds, growth), length);
      EXPECT_EQ(rounds_within(length, growth), rounds);
      EXPECT_EQ(rounds_within(length * 0.999, growth), rounds - 1);
    }
  }
}

}  // namespace
