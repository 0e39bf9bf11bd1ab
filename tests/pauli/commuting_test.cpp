#include "zeltbraidwerk/pauli/commuting.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/digest.h"
#include "support/oracles.h"
#include "support/pauli.h"

namespace {

using support::at;
using Classes = std::vector<std::vector<int>>;

/// Whether every vertex has one colour, and no edge has ends of the same one.
bool is_colouring(const Classes& classes, const BoolRow& graph, int n) {
  std::vector<int> members;
  for (const auto& one : classes) {
    for (const int u : one) {
      if (std::ranges::any_of(one, [&](int v) { return graph[at(u * n + v)]; })) return false;
    }
    members.insert(members.end(), one.begin(), one.end());
  }
  std::ranges::sort(members);
  for (int v = 0; v < n; ++v) {
    if (members.size() != at(n) || members[at(v)] != v) return false;
  }
  return true;
}

TEST(Commuting, ColoursAndKeepsItsChoices) {
  std::mt19937 rng(1);
  support::Digest digest;
  for (int round = 0; round < 300; ++round) {
    const int n = round % 80;
    const unsigned density = 1 + static_cast<unsigned>(rng() % 9);
    BoolRow graph(at(n * n));
    for (int i = 0; i < n; ++i) {
      for (int j = 0; j < i; ++j) {
        graph[at(i * n + j)] = graph[at(j * n + i)] = rng() % 10 < density;
      }
    }
    for (const auto& classes : {coloration_lf(graph, at(n)), coloration_sl(graph, at(n))}) {
      ASSERT_TRUE(is_colouring(classes, graph, n));
      digest.add(classes);
    }
  }
  EXPECT_EQ(digest.text(), "0402511c5f06121f");
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
    ASSERT_EQ(found, coloration_lf(graph, at(m)));
  }
}

}  // namespace
