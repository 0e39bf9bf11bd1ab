#include "zeltbraidwerk/graphs/internal/hamiltonian_path.h"

#include <gtest/gtest.h>

#include <atomic>

#include "support/graphs.h"
#include "zeltbraidwerk/foundations/internal/engine_draw.h"

namespace {

using namespace support;
using namespace zelt::braidwerk::internal;
using structures::Graph;

/// Whether some order of all vertices is a path: by the sets of vertices that paths to v may meet.
bool has_path(const Graph& g) {
  std::vector<std::vector<bool>> ends(std::size_t{1} << g.n, std::vector<bool>(at(g.n)));
  for (int v = 0; v < g.n; ++v) ends[std::size_t{1} << v][at(v)] = true;
  for (std::size_t met = 1; met < ends.size(); ++met) {
    for (int v = 0; v < g.n; ++v) {
      for (const int w : g.neighbors(v)) {
        if (ends[met][at(v)] && (met >> w & 1) == 0) ends[met | std::size_t{1} << w][at(w)] = true;
      }
    }
  }
  return g.n == 0 || std::ranges::find(ends.back(), true) != ends.back().end();
}

TEST(HamiltonianPath, IsFoundWhereThereIsOneAndVaries) {
  Rng rng(1);
  int found = 0;
  for (int trial = 0; trial < 1500; ++trial) {
    const int n = static_cast<int>(rng() % 9);
    const Graph g = with_random_edges(Graph(n), 20 + static_cast<unsigned>(rng() % 40), rng);
    const HamiltonianSearch search = find_hamiltonian_path(BitGraph(g), {});
    ASSERT_EQ(search.outcome == HamiltonianSearch::found, has_path(g)) << g;
    if (search.outcome != HamiltonianSearch::found) continue;
    ++found;
    std::vector<int> path = search.path;
    EXPECT_TRUE(static_cast<int>(path.size()) == n && g.is_ham_path(path)) << g << show(path);
    vary_hamiltonian_path(BitGraph(g), path, SeededDraw(static_cast<unsigned>(trial), 0));
    EXPECT_TRUE(static_cast<int>(path.size()) == n && g.is_ham_path(path)) << g << show(path);
  }
  EXPECT_GT(found, 300);
  const Graph large = grid(9, 8);
  std::vector<int> path = find_hamiltonian_path(BitGraph(large), {}).path;
  const std::vector<int> first = path;
  vary_hamiltonian_path(BitGraph(large), path, SeededDraw(1, 0));
  EXPECT_TRUE(large.is_ham_path(first) && large.is_ham_path(path) && path != first);
}

TEST(HamiltonianPath, EndsWhenTold) {
  const BitGraph graph(grid(4, 4));
  Control capped;
  capped.max_operations = 3;
  EXPECT_EQ(find_hamiltonian_path(graph, capped).outcome, HamiltonianSearch::unfinished);
  const std::atomic<bool> stop = true;
  Control stopped;
  stopped.stop = &stop;
  EXPECT_EQ(find_hamiltonian_path(graph, stopped).outcome, HamiltonianSearch::unfinished);
}

}  // namespace
