// The table of graph states that the Python package has, and the program that made it.
#include "graph_states/classes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/graph_classes.h"

namespace {

using namespace graph_states;
using zelt::braidwerk::internal::canonical_key;
using zelt::braidwerk::internal::fewest_gates_of_state;
using zelt::braidwerk::internal::graph_of_key;
using zelt::braidwerk::internal::PauliFrame;

TEST(GraphStateClasses, AreThoseOfTheTable) {
  std::ifstream file(GRAPH_STATES);
  std::string line;
  ASSERT_TRUE(std::getline(file, line));
  for (int n = 2; n <= 7; ++n) {
    for (const GraphClass& made : connected_ones(classes(n))) {
      ASSERT_TRUE(std::getline(file, line));
      EXPECT_EQ(as_csv(made), line);
    }
  }
}

/// Those that are not connected too: there the gates of the parts add up.
TEST(GraphStateClasses, AreKnownToTheLibrary) {
  for (int n = 1; n <= 7; ++n) EXPECT_TRUE(are_known(classes(n)));
  EXPECT_FALSE(fewest_gates_of_state(PauliFrame(10, 10)));
}

TEST(GraphStateClasses, KeysAreBlindToNamesAndToNothingElse) {
  std::mt19937 random(1);
  for (int k = 0; k < 2000; ++k) {
    SmallGraph graph{2 + k % 8};
    std::vector<int> names(static_cast<std::size_t>(graph.n));
    std::iota(names.begin(), names.end(), 0);
    std::ranges::shuffle(names, random);
    SmallGraph renamed{graph.n};
    for (std::size_t a = 0; a < names.size(); ++a) {
      for (std::size_t b = 0; b < names.size(); ++b) {
        if (a < b && random() % 3 == 0) {
          graph.rows[a] |= static_cast<std::uint16_t>(1U << b);
          graph.rows[b] |= static_cast<std::uint16_t>(1U << a);
        }
      }
    }
    for (std::size_t a = 0; a < names.size(); ++a) {
      for (std::size_t b = 0; b < names.size(); ++b) {
        if (!graph.joined(static_cast<int>(a), static_cast<int>(b))) continue;
        renamed.rows[static_cast<std::size_t>(names[a])] |=
            static_cast<std::uint16_t>(1U << names[b]);
      }
    }
    const std::uint64_t key = canonical_key(graph);
    EXPECT_EQ(key, canonical_key(renamed));
    EXPECT_EQ(key, canonical_key(graph_of_key(key, graph.n)));
    EXPECT_EQ(graph_of_key(key, graph.n).edges(), graph.edges());
  }
}

}  // namespace
