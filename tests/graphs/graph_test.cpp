#include "zeltbraidwerk/graphs/graph.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/digest.h"
#include "support/graphs.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/graphs/internal/edge_coloring.h"

namespace {

using namespace support;
using structures::Graph;
using testing::ElementsAre;
using testing::IsEmpty;

using Path = std::vector<int>;

TEST(Graph, EdgesAndVerticesAreSeparate) {
  Graph g(3);
  EXPECT_EQ(g.nb_vertices(), 3);
  EXPECT_FALSE(g.is_connected());
  g.add_edge(0, 1);
  g.add_edge(1, 2);
  EXPECT_TRUE(g.is_connected());
  EXPECT_FALSE(g.is_non_cutting(1));
  EXPECT_TRUE(g.is_non_cutting(0));
  EXPECT_EQ(g.degree(1), 2);
  EXPECT_FALSE(g.are_neighbors(0, 3));
  EXPECT_FALSE(g.are_neighbors(-1, 2));

  const Graph sub = g.induced_subgraph({0, 1, 7});
  EXPECT_EQ(sub.n, 3);
  EXPECT_EQ(sub.nb_vertices(), 2);
  EXPECT_EQ(show(sub.edges()), "0-1");

  g.disconnect(2);
  EXPECT_THAT(g.neighbors(2), IsEmpty());
  EXPECT_EQ(show(g.edges()), "0-1");
  EXPECT_EQ(g.nb_vertices(), 3);
  EXPECT_FALSE(g.is_connected());

  EXPECT_TRUE(Graph(1).is_connected());
  EXPECT_FALSE(Graph(1).is_non_cutting(0));
  EXPECT_FALSE(Graph().is_connected());
}

TEST(Graph, WeightsGrowOnDemandAndCopiesForget) {
  Graph g(3);
  g.add_edge(0, 1, 2.5);
  EXPECT_THAT(g.weights, ElementsAre(0, 2.5, 0, 2.5, 0, 0, 0, 0, 0));
  g.remove_edge(1, 0);
  EXPECT_EQ(g.weights[1], 2.5);

  g.sketch_mode = 1;
  g.sketches = {{1}, {1}, {1}};
  g.steiner_cache[{0}] = Graph(3);
  const Graph copy = g;
  EXPECT_EQ(copy.sketch_mode, 1);
  EXPECT_EQ(copy.weights, g.weights);
  EXPECT_TRUE(copy.sketches.empty() && copy.steiner_cache.empty());
  Graph assigned;
  assigned = g;
  EXPECT_EQ(assigned.sketches.size(), 3u);
  EXPECT_EQ(assigned.steiner_cache.size(), 1u);
}

TEST(Graph, HamiltonianPaths) {
  const Graph g = line(3);
  EXPECT_TRUE(g.is_ham_path({0, 1, 2}));
  EXPECT_TRUE(g.is_ham_path({2, 1, 0}));
  EXPECT_FALSE(g.is_ham_path({1, 0, 2}));
  EXPECT_FALSE(g.is_ham_path({0, 1}));
  EXPECT_FALSE(g.is_ham_path({0, 1, 0}));
  EXPECT_FALSE(g.is_ham_path({0, 1, 9}));
  EXPECT_TRUE(g.is_ham_path({0, 1, 0, 2}));  // longer: the last entry stands in for the end
  EXPECT_TRUE(Graph().is_ham_path({}));
}

TEST(Graph, NonCuttingVerticesAgreeWithTheirDefinition) {
  Rng rng(31);
  for (int trial = 0; trial < 400; ++trial) {
    const int n = static_cast<int>(rng() % 10) + (trial % 8 == 0 ? 60 : 0);
    const auto percent = static_cast<unsigned>(trial % 4 == 0 ? 60 : 250 / (n + 1));
    const Graph g = with_random_edges(Graph(n), percent, rng);
    std::set<int> members;
    for (int v = 0; v < n; ++v) {
      if (rng() % 4 != 0) members.insert(v);
    }
    const Graph sub = g.induced_subgraph(members);
    std::vector<int> expected;
    for (const int v : members) {
      if (sub.is_non_cutting(v)) expected.push_back(v);
    }
    std::vector<int> found;
    using namespace zelt::braidwerk::internal;
    non_cutting(BitGraph(g), VertexSet(n, members)).for_each([&](int v) { found.push_back(v); });
    ASSERT_EQ(found, expected) << g << show(Path(members.begin(), members.end()));
  }
}

TEST(ShortestPaths, TieBreaks) {
  const Graph ring = line(4, true);
  EXPECT_THAT(ring.shortest_path(0, 2), ElementsAre(0, 1, 2));
  EXPECT_THAT(ring.shortest_path(2, 2), ElementsAre(2));
  Graph cut = ring;
  cut.disconnect(2);
  EXPECT_THAT(cut.shortest_path(0, 2), IsEmpty());
  EXPECT_THAT(cut.shortest_path(0, 4), IsEmpty());
  Graph filled = ring;
  filled.set_shortest_paths();
  EXPECT_THAT(filled.shortest_paths[0][2], ElementsAre(0, 3, 2));
}

/// Paths along edges, and no edge that would make one shorter.
bool are_shortest(const Graph& g) {
  for (int i = 0; i < g.n; ++i) {
    const std::vector<Path>& row = g.shortest_paths[at(i)];
    for (int j = 0; j < g.n; ++j) {
      const Path& path = row[at(j)];
      if (path.empty() ? i == j : path.front() != i || path.back() != j) return false;
      for (std::size_t k = 1; k < path.size(); ++k) {
        if (!g.are_neighbors(path[k - 1], path[k])) return false;
      }
      for (const int next : g.neighbors(j)) {
        const std::size_t length = row[at(next)].size();
        if (path.empty() ? length != 0 : length == 0 || length > path.size() + 1) return false;
      }
    }
  }
  return true;
}

TEST(ShortestPaths, AreShortestAndKeepTheirTies) {
  Rng rng(17);
  Digest digest;
  for (int trial = 0; trial < 300; ++trial) {
    const int n = static_cast<int>(rng() % 12) + (trial % 150 == 0 ? 60 : 0);
    Graph g = with_random_edges(Graph(n), static_cast<unsigned>(rng() % 60), rng);
    g.update_shortest_paths();  // not filled yet: as set_shortest_paths
    ASSERT_TRUE(are_shortest(g)) << g;
    digest.add(g.shortest_paths);
    if (n == 0) continue;
    g.disconnect(static_cast<int>(rng() % at(n)));
    g.update_shortest_paths();
    ASSERT_TRUE(are_shortest(g)) << g;
    digest.add(g.shortest_paths);
  }
  EXPECT_EQ(digest.text(), "094e886a9bcd30d0");
}

TEST(EdgeColoring, NeedsOneMatchingMoreThanTheLargestDegreeAndNoMoreOnTwoSides) {
  namespace internal = zelt::braidwerk::internal;
  std::mt19937 rng(3);
  for (int n = 0; n < 40; ++n) {
    for (const auto& [odds, two_sides] :
         {std::pair(1U, false), {3U, false}, {5U, false}, {1U, true}, {4U, true}}) {
      internal::BitGraph graph(n);
      std::vector<std::size_t> degrees(at(n));
      int edges = 0;
      for (int a = 0; a < n; ++a) {
        for (int b = a + 1; b < n; ++b) {
          if (rng() % 5 >= odds || (two_sides && a % 3 / 2 == b % 3 / 2)) continue;
          graph.join(a, b);
          ++degrees[at(a)];
          ++degrees[at(b)];
          ++edges;
        }
      }
      const std::size_t most = n == 0 ? 0 : std::ranges::max(degrees);
      EXPECT_LE(internal::few_matchings_of(graph).size(), most + (two_sides ? 0 : 1));
      EXPECT_LE(internal::matchings_of(graph).size(), n == 0 ? 0 : most + 1);
      for (const auto& matchings :
           {internal::matchings_of(graph), internal::few_matchings_of(graph)}) {
        internal::BitGraph left = graph;
        int uncoloured = edges;
        for (const auto& matching : matchings) {
          std::vector<bool> met(at(n));
          for (const auto& [a, b] : matching) {
            ASSERT_TRUE(left.joined(a, b) && !met[at(a)] && !met[at(b)]);
            met[at(a)] = met[at(b)] = true;
            left.part(a, b);
            --uncoloured;
          }
        }
        EXPECT_EQ(uncoloured, 0);
      }
    }
  }
}

}  // namespace
