#include "zeltbraidwerk/graphs/routines.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "support/graphs.h"

namespace {

using namespace support;
using structures::Gate;
using structures::Graph;

/// The error stream's text while f throws "ooops".
template <class F>
std::string complaint_of(F&& f) {
  testing::internal::CaptureStderr();
  try {
    f();
    ADD_FAILURE() << "nothing thrown";
  } catch (const std::logic_error& error) {
    EXPECT_STREQ(error.what(), "ooops");
  }
  return testing::internal::GetCapturedStderr();
}

TEST(TreeRoutines, Examples) {
  const Graph path = line(3);
  EXPECT_EQ(show(routines::fill_for_fan_in(path, {0, 2})), "CNOT 1 0");
  EXPECT_EQ(show(routines::fan_in_on_tree(path, {0, 2}, 0)), "CNOT 1 0, CNOT 2 1, CNOT 1 0");
  EXPECT_EQ(show(routines::fan_in_on_tree(line(4), {3}, 3)),
            "CNOT 2 3, CNOT 1 2, CNOT 0 1, CNOT 0 1, CNOT 1 2, CNOT 2 3");
  EXPECT_EQ(show(routines::fan_in_on_tree(Graph(3), {1}, 1)), "");
  EXPECT_EQ(show(routines::fill_tree(path, {0}, 0, true)), "");
  EXPECT_EQ(show(routines::fill_tree(path, {0, 2}, 0, true)), "CNOT 0 1");
  EXPECT_EQ(show(routines::fill_tree(path, {0, 2}, 0, false)), "CNOT 2 1, CNOT 1 0");
  EXPECT_EQ(show(routines::empty_tree(path, {}, 0)), "CNOT 1 2, CNOT 0 1");
  EXPECT_EQ(show(routines::empty_tree(star(4), {}, 0)), "CNOT 0 3, CNOT 0 2, CNOT 0 1");
}

TEST(TreeRoutines, Failures) {
  const Graph ring = line(3, true);
  EXPECT_EQ(complaint_of([&] { routines::fill_tree(line(3), {1}, 1, false); }),
            "Error: Can't fill up this tree!\n");
  EXPECT_EQ(complaint_of([&] { routines::fill_tree(ring, {0, 1}, 0, false); }),
            "Error: Can't fill up this tree!\n");  // no leaf to start from
  EXPECT_EQ(complaint_of([&] { routines::fill_for_fan_in(line(3), {}); }), "");
  EXPECT_EQ(complaint_of([&] { routines::empty_for_fan_in(ring, 0); }), "");
  EXPECT_EQ(complaint_of([&] { routines::empty_for_fan_in(line(3), 7); }), "");
  EXPECT_EQ(show(routines::fill_tree(Graph(), {0, 1}, 0, true)), "");
  EXPECT_EQ(show(routines::empty_tree(Graph(), {}, 0)), "");
}

TEST(TreeRoutines, MoveColumnsAndParitiesAlongTheTree) {
  Rng rng(23);
  for (int trial = 0; trial < 300; ++trial) {
    const int n = 2 + static_cast<int>(rng() % 20) + (trial % 20 == 0 ? 60 : 0);
    Graph device = random_device(n, 20, rng);
    device.set_shortest_paths();
    std::vector<int> terminals = shuffled(n, rng);
    terminals.resize(2 + rng() % at(n - 1));
    const int root = terminals.front();
    const Graph tree = device.steiner_tree(terminals);
    ASSERT_TRUE(tree.is_connected());

    // Fan-in: the root holds the terminals.
    std::vector<Gate> gates = routines::fan_in_on_tree(tree, terminals, root);
    ASSERT_TRUE(runs_on(tree, gates));
    ASSERT_EQ(gates.size(), tree.vertices.size() - terminals.size() + tree.vertices.size() - 1);
    BoolMatrix wires = identity(n);
    for (const Gate& gate : gates) add_row(wires, gate.qbits[0], gate.qbits[1]);
    for (int v = 0; v < n; ++v) {
      ASSERT_EQ(wires[at(root)][at(v)], std::ranges::count(terminals, v) == 1);
    }

    // Fill and empty: a column with ones on the terminals ends with the root's alone.
    const bool root_is_set = rng() & 1;
    std::vector<bool> column(at(n));
    for (const int t : terminals) column[at(t)] = t != root || root_is_set;
    const auto run = [&](const std::vector<Gate>& part) {
      ASSERT_TRUE(runs_on(tree, part));
      for (const Gate& gate : part) {
        column[at(gate.qbits[1])] = column[at(gate.qbits[1])] != column[at(gate.qbits[0])];
      }
    };
    run(routines::fill_tree(tree, terminals, root, root_is_set));
    for (const int v : tree.vertices) ASSERT_TRUE(column[at(v)]);
    run(routines::empty_tree(tree, terminals, root));
    for (int v = 0; v < n; ++v) ASSERT_EQ(column[at(v)], v == root);
  }
}

}  // namespace
