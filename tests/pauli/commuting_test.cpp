#include "zeltbraidwerk/pauli/commuting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "support/pauli.h"

namespace {

using support::rows;
using support::text;
using testing::ElementsAre;
using testing::IsEmpty;
using Classes = std::vector<std::vector<int>>;

std::size_t at(int i) {
  return static_cast<std::size_t>(i);
}

/// As written, an entry of the graph at a time. The vertex to visit next is the one of the highest
/// degree, counted over the lower vertices or over those left.
Classes naive_colouring(const BoolRow& graph, int n, bool over_those_left) {
  const auto joined = [&](int u, int v) { return graph[at(u * n + v)]; };
  std::vector<int> colours(at(n), -1);
  Classes classes;
  for (int k = 0; k < n; ++k) {
    int next = -1;
    int most = -1;
    for (int u = 0; u < n; ++u) {
      int degree = 0;
      for (int v = 0; v < n; ++v) {
        degree += joined(u, v) && (over_those_left ? colours[at(v)] < 0 : v < u);
      }
      if (colours[at(u)] >= 0 || degree <= most) continue;
      next = u;
      most = degree;
    }
    const auto is_taken = [&](int colour) {
      const auto& members = classes[at(colour)];
      return std::any_of(members.begin(), members.end(), [&](int v) { return joined(next, v); });
    };
    int colour = 0;
    while (at(colour) < classes.size() && is_taken(colour)) ++colour;
    if (at(colour) == classes.size()) classes.emplace_back();
    classes[at(colour)].push_back(next);
    colours[at(next)] = colour;
  }
  for (auto& members : classes) std::sort(members.begin(), members.end());
  return classes;
}

TEST(Commuting, ColoursAsWritten) {
  std::mt19937 rng(1);
  for (int round = 0; round < 300; ++round) {
    const int n = round % 80;
    const unsigned density = 1 + static_cast<unsigned>(rng() % 9);
    BoolRow graph(at(n * n));
    for (int i = 0; i < n; ++i) {
      for (int j = 0; j < i; ++j) {
        graph[at(i * n + j)] = graph[at(j * n + i)] = rng() % 10 < density;
      }
    }
    ASSERT_EQ(coloration_lf(graph, at(n)), naive_colouring(graph, n, false));
    ASSERT_EQ(coloration_sl(graph, at(n)), naive_colouring(graph, n, true));
  }
}

TEST(Commuting, GroupsAreTheColoursOfTheConflictGraph) {
  std::mt19937 rng(2);
  for (int round = 0; round < 200; ++round) {
    const int m = static_cast<int>(rng() % 90);
    PauliTable table = support::random_rows(m, 1 + round % 6, rng);
    auto params = support::numbered_angles(at(m));
    BoolRow graph(at(m * m));
    for (int i = 0; i < m; ++i) {
      for (int j = 0; j < m; ++j) graph[at(i * m + j)] = !commute(table[at(i)], table[at(j)]);
    }
    Classes found;
    for (const auto& [group, angles] : split_commuting(table, params)) {
      auto& members = found.emplace_back();
      for (std::size_t k = 0; k < group.size(); ++k) {
        members.push_back(static_cast<int>(angles[k].value) - 1);
        ASSERT_EQ(group[k], table[at(members.back())]);
      }
    }
    ASSERT_EQ(found, naive_colouring(graph, m, false));
  }
}

TEST(Commuting, KeepsToItsWorkedExamples) {
  const auto groups = [](const std::vector<std::string>& strings) {
    PauliTable table = rows(strings);
    auto params = support::numbered_angles(table.size());
    std::vector<std::string> texts;
    for (const auto& [group, angles] : split_commuting(table, params)) texts.push_back(text(group));
    return texts;
  };
  EXPECT_THAT(groups({}), IsEmpty());
  EXPECT_THAT(groups({"ZI", "XX", "II"}), ElementsAre("XX II", "ZI"));
  EXPECT_THAT(groups({"ZZ", "XX", "YY"}), ElementsAre("ZZ XX YY"));
  EXPECT_THAT(groups({"X", "Y", "Z"}), ElementsAre("Z", "Y", "X"));
  EXPECT_TRUE(cmp_degrees({0, 2}, {1, 1}));
  EXPECT_FALSE(cmp_degrees({0, 1}, {1, 1}));
}

}  // namespace
