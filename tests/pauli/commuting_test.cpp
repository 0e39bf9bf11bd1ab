#include "zeltbraidwerk/pauli/commuting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

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

/// Colours as written, an entry of the graph at a time. `next` picks the vertex to visit.
Classes naive_colouring(const BoolRow& graph, int n,
                        const std::function<int(const std::vector<int>&)>& next) {
  const auto joined = [&](int u, int v) { return graph[at(u * n + v)]; };
  std::vector<int> order;
  std::vector<int> colours(at(n), -1);
  Classes classes;
  for (int k = 0; k < n; ++k) {
    const int u = next(order);
    int colour = 0;
    for (bool free = false; !free; colour += !free) {
      free = std::none_of(order.begin(), order.end(),
                          [&](int v) { return joined(u, v) && colours[at(v)] == colour; });
    }
    colours[at(u)] = colour;
    order.push_back(u);
    if (at(colour) == classes.size()) classes.emplace_back();
  }
  for (int v = 0; v < n; ++v) classes[at(colours[at(v)])].push_back(v);
  return classes;
}

Classes naive_lf(const BoolRow& graph, int n) {
  return naive_colouring(graph, n, [&](const std::vector<int>& order) {
    int best = -1;
    int most = -1;
    for (int u = 0; u < n; ++u) {
      int degree = 0;
      for (int v = 0; v < u; ++v) degree += graph[at(u * n + v)];
      if (std::count(order.begin(), order.end(), u) != 0 || degree <= most) continue;
      best = u;
      most = degree;
    }
    return best;
  });
}

Classes naive_sl(const BoolRow& graph, int n) {
  return naive_colouring(graph, n, [&](const std::vector<int>& order) {
    int best = -1;
    int most = -1;
    for (int u = 0; u < n; ++u) {
      int degree = 0;
      for (int v = 0; v < n; ++v) {
        degree += graph[at(u * n + v)] && std::count(order.begin(), order.end(), v) == 0;
      }
      if (std::count(order.begin(), order.end(), u) != 0 || degree <= most) continue;
      best = u;
      most = degree;
    }
    return best;
  });
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
    ASSERT_EQ(coloration_lf(graph, at(n)), naive_lf(graph, n));
    ASSERT_EQ(coloration_sl(graph, at(n)), naive_sl(graph, n));
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
    ASSERT_EQ(found, naive_lf(graph, m));
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
