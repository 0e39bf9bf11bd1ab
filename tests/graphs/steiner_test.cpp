#include "zeltbraidwerk/graphs/steiner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "support/digest.h"
#include "support/graphs.h"
#include "support/scripted_uniform.h"

namespace {

using namespace support;
using structures::Graph;
using testing::ElementsAre;
using testing::IsEmpty;

Graph with_paths(Graph g) {
  g.set_shortest_paths();
  return g;
}

/// "vertices; edges" of a tree.
std::string show(const Graph& tree) {
  return support::show(std::vector<int>(tree.vertices.begin(), tree.vertices.end())) + "; " +
         support::show(tree.edges());
}

std::string good(Graph g, std::vector<int> terminals) {
  return show(structures::steiner_good(g, terminals));
}

TEST(SteinerGood, Examples) {
  const Graph path = with_paths(line(4));
  EXPECT_EQ(good(path, {0, 3, 1}), "0 1 2 3; 0-1 1-2 2-3");
  EXPECT_EQ(good(path, {}), "0 1 2 3; ");
  EXPECT_EQ(good(path, {2}), "2; ");
  EXPECT_EQ(good(path, {2, 0, 2, 0}), good(path, {2, 0}));
  const Graph star = with_paths(support::star(4));
  EXPECT_EQ(good(star, {1, 2, 3}), "0 1 2 3; 0-1 0-2 0-3");
  EXPECT_EQ(good(Graph(), {}), "; ");
}

TEST(SteinerGood, EndsOnWhatItCannotJoin) {
  Graph cut = with_paths(line(5));
  cut.disconnect(2);
  cut.update_shortest_paths();
  EXPECT_EQ(good(cut, {0, 1}), "0 1; 0-1");
  EXPECT_EQ(good(cut, {0, 1, 4}), "0 1 4; ");  // a pair out of reach counts as the nearest
  EXPECT_THROW(good(line(3), {0, 2}), std::out_of_range);  // no path table
  EXPECT_THROW(good(with_paths(line(3)), {0, 3}), std::out_of_range);
  EXPECT_THROW(good(line(3), {-1}), std::out_of_range);
}

TEST(SteinerGood, KeepsItsTrees) {
  Rng rng(5);
  Digest digest;
  for (int trial = 0; trial < 500; ++trial) {
    const int n = 1 + static_cast<int>(rng() % 14);
    Graph g = with_paths(random_device(n, static_cast<unsigned>(rng() % 40), rng));
    if (trial % 3 == 0) {
      g.disconnect(static_cast<int>(rng() % at(n)));
      g.update_shortest_paths();
    }
    std::vector<int> terminals(rng() % at(n + 2));
    for (int& t : terminals) t = static_cast<int>(rng() % at(n));
    digest.add(good(g, terminals));
  }
  EXPECT_EQ(digest.text(), "004f247f0cab7311");
}

TEST(SteinerTree, IsKeptForTheVeryListAsked) {
  int draws = 0;
  uniform_script = [&](int a, int b) { return a + draws++ % (b - a + 1); };
  Graph g = with_paths(grid(4, 4));
  g.sketch_mode = 1;
  std::vector<int> list{3, 12, 5};
  const std::string first = show(g.steiner_tree(list));
  EXPECT_EQ(draws, 1 + 2 + 4 + 8);
  EXPECT_EQ(show(g.steiner_tree(list)), first);
  std::vector<int> turned{5, 12, 3};
  g.steiner_tree(turned);
  EXPECT_EQ(g.steiner_cache.size(), 2u);
  g.sketch_mode = 0;
  EXPECT_EQ(show(g.steiner_tree(list)), first);  // a hit, whatever the mode is now
  EXPECT_EQ(draws, 15);
}

TEST(Sketches, SeedSetsAndTheirDraws) {
  std::vector<int> bounds;
  uniform_script = [&](int, int b) {
    bounds.push_back(b);
    return static_cast<int>(bounds.size()) % 2;
  };
  EXPECT_THAT(structures::get_seed_sets(0), IsEmpty());
  EXPECT_THAT(structures::get_seed_sets(1), IsEmpty());
  EXPECT_THAT(structures::get_seed_set(5, 0), IsEmpty());
  EXPECT_THAT(bounds, IsEmpty());
  EXPECT_EQ(structures::get_seed_sets(2).size(), 1u);
  EXPECT_EQ(structures::get_seed_sets(3).size(), 1u);
  EXPECT_THAT(bounds, ElementsAre(1, 2));
  EXPECT_EQ(structures::get_seed_sets(17).size(), 4u);
  EXPECT_EQ(structures::get_seed_set(9, 5), (std::set<int>{0, 1}));
}

TEST(Sketches, ASeedAlreadyHeldWinsATie) {
  Graph g = with_paths(line(3));
  EXPECT_THAT(structures::build_sketches({{0, 2}}, g),
              ElementsAre(std::set{0}, std::set{0}, std::set{2}));
  EXPECT_THAT(structures::build_sketches({{2}, {0, 2}}, g),
              ElementsAre(std::set{0, 2}, std::set{2}, std::set{2}));
}

TEST(SketchSteiner, TakesTheBestCommonSeed) {
  Rng rng(77);
  Digest digest;
  uniform_script = [&](int a, int b) { return a + static_cast<int>(rng() % at(b - a + 1)); };
  for (int trial = 0; trial < 300; ++trial) {
    const int n = 2 + static_cast<int>(rng() % 14);
    Graph g = with_paths(random_device(n, static_cast<unsigned>(rng() % 40), rng));
    std::vector<int> terminals(1 + rng() % at(n));
    for (int& t : terminals) t = static_cast<int>(rng() % at(n));
    const Graph tree = structures::sketch_steiner(g, terminals);
    ASSERT_TRUE(tree.is_connected());
    for (const int t : terminals) ASSERT_TRUE(tree.vertices.contains(t));
    digest.add(show(tree));
  }
  EXPECT_EQ(digest.text(), "21b7245c7a684781");
}

TEST(SketchSteiner, GivesTheEmptyGraphWithoutACommonSeed) {
  Graph one = with_paths(Graph(1));
  std::vector<int> terminals{0};
  EXPECT_EQ(structures::sketch_steiner(one, terminals).n, 0);
  Graph g = with_paths(line(3));
  g.sketches = {{0}, {0, 1}, {1}};
  terminals = {0, 2};
  EXPECT_EQ(structures::sketch_steiner(g, terminals).n, 0);
  terminals = {0, 1};
  EXPECT_EQ(show(structures::sketch_steiner(g, terminals)), "0 1; 0-1");
  g.disconnect(0);
  g.update_shortest_paths();
  EXPECT_EQ(structures::sketch_steiner(g, terminals).n, 0);  // the seed is out of reach
  terminals = {};
  EXPECT_EQ(structures::sketch_steiner(g, terminals).n, 0);
}

}  // namespace
