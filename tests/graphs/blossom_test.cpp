#include "zeltbraidwerk/graphs/blossom.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

#include "support/digest.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Table = std::vector<std::vector<int>>;
using Pairs = std::vector<std::tuple<int, int>>;

/// Scores from `low` to `high`, the diagonal included, not symmetric.
Table random_table(int n, int low, int high, std::mt19937& rng) {
  std::uniform_int_distribution<int> score(low, high);
  Table table(static_cast<std::size_t>(n), std::vector<int>(static_cast<std::size_t>(n)));
  for (auto& row : table) std::ranges::generate(row, [&] { return score(rng); });
  return table;
}

int score(const Table& table, int i, int j) {
  const auto a = static_cast<std::size_t>(i);
  const auto b = static_cast<std::size_t>(j);
  return std::max(table[a][b], table[b][a]);
}

/// The best weight, by trying every partner for the first free item.
int best_weight(const Table& table, unsigned used) {
  const int n = static_cast<int>(table.size());
  int i = 0;
  while (i < n && (used >> i & 1) != 0) ++i;
  if (i == n) return 0;
  int best = best_weight(table, used | 1u << i);
  for (int j = i + 1; j < n; ++j) {
    if ((used >> j & 1) != 0) continue;
    best = std::max(best, score(table, i, j) + best_weight(table, used | 1u << i | 1u << j));
  }
  return best;
}

TEST(Blossom, FindsTheBestMatchingAndKeepsItsPairs) {
  std::mt19937 rng(1);
  support::Digest digest;
  for (int round = 0; round < 400; ++round) {
    const int n = static_cast<int>(rng() % 9);
    const int low = std::vector{-4, -1, 0, 1}[rng() % 4];
    const Table table = random_table(n, low, std::vector{1, 4, 50}[rng() % 3], rng);
    Pairs pairs;
    ASSERT_EQ(BlossomAlgorithm(table, n, pairs), best_weight(table, 0)) << "round " << round;
    digest.add(pairs);
  }
  for (const int n : {30, 61}) {
    for (const int high : {1, 30}) {
      Pairs pairs;
      BlossomAlgorithm(random_table(n, -1, high, rng), n, pairs);
      digest.add(pairs);
    }
  }
  EXPECT_EQ(digest.text(), "2528558481b8a13c");
}

TEST(Blossom, CountsAPairWithItsLargerScoreAndAppends) {
  Pairs pairs{{7, 8}};
  EXPECT_EQ(BlossomAlgorithm({{0, 5}, {0, 0}}, 2, pairs), 5.0);
  EXPECT_THAT(pairs, ElementsAre(std::tuple(7, 8), std::tuple(0, 1)));
  pairs.clear();
  const Table path{{-1, 1, -1, -1}, {1, -1, 3, -1}, {-1, 3, -1, 1}, {-1, -1, 1, -1}};
  EXPECT_EQ(BlossomAlgorithm(path, 4, pairs), 3.0);
  EXPECT_THAT(pairs, ElementsAre(std::tuple(1, 2)));
  pairs.clear();
  EXPECT_EQ(BlossomAlgorithm({}, 0, pairs), 0.0);
  EXPECT_EQ(BlossomAlgorithm({{9}}, 1, pairs), 0.0);
  EXPECT_THAT(pairs, IsEmpty());
}

}  // namespace
