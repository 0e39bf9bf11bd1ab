#include "zeltbraidwerk/graphs/steiner_gauss.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "support/digest.h"
#include "support/graphs.h"
#include "support/scripted_uniform.h"
#include "zeltbraidwerk/graphs/routines.h"

namespace {

using namespace support;
using structures::Gate;
using structures::Graph;
using structures::Table;

std::vector<Gate> synthesise(const BoolMatrix& m, Graph device, std::vector<int> path) {
  return synthesis::steiner_gauss_ham_path(table(m), device, path);
}

TEST(SteinerGauss, Examples) {
  const Graph pair = line(2);
  EXPECT_EQ(show(synthesise(matrix({"10", "11"}), pair, {0, 1})), "CNOT 0 1");
  EXPECT_EQ(show(synthesise(matrix({"01", "10"}), pair, {0, 1})), "CNOT 1 0, CNOT 0 1, CNOT 1 0");
  EXPECT_EQ(show(synthesise(matrix({"11", "01"}), pair, {1, 0})), "CNOT 1 0");
  EXPECT_EQ(show(synthesise(identity(5), line(5), {4, 3, 2, 1, 0})), "");
  EXPECT_EQ(show(synthesise({}, Graph(), {})), "");
  EXPECT_EQ(show(synthesise(identity(1), Graph(1), {0})), "");
}

TEST(SteinerGauss, ReducesAndKeepsItsGates) {
  Rng rng(41);
  Digest digest;
  uniform_script = [&](int a, int b) { return a + static_cast<int>(rng() % at(b - a + 1)); };
  for (int trial = 0; trial < 250; ++trial) {
    const int n = 1 + static_cast<int>(rng() % 11);
    std::vector<int> path;
    Graph device = random_device(n, static_cast<unsigned>(rng() % 50), rng, &path);
    device.sketch_mode = trial % 5 == 0 ? 1 : 0;
    const BoolMatrix m = random_invertible(n, rng);
    testing::internal::CaptureStderr();
    try {
      const std::vector<Gate> found = synthesise(m, device, path);
      digest.add(found);
      EXPECT_TRUE(reduces_on(device, found, m)) << device << show(m) << " along " << show(path);
    } catch (const std::exception& error) {  // sketches may lose their seeds on the way down
      EXPECT_EQ(device.sketch_mode, 1) << error.what();
    }
    testing::internal::GetCapturedStderr();
  }
  EXPECT_EQ(digest.text(), "b692e8477787dc3a");
}

TEST(SteinerGauss, LargeDevices) {
  Rng rng(43);
  for (const auto& [width, height] : Edges{{7, 9}, {8, 8}, {13, 5}, {1, 70}}) {
    const Graph device = grid(width, height);
    const BoolMatrix m = random_invertible(device.n, rng);
    std::vector<int> path(at(device.n));
    for (int v = 0; v < device.n; ++v) path[at(v)] = v;
    ASSERT_TRUE(reduces_on(device, synthesise(m, device, path), m)) << width << 'x' << height;
  }
}

template <class Error, class F>
void expect_error(const std::string& message, const std::string& complaint, F&& f) {
  testing::internal::CaptureStderr();
  try {
    f();
    ADD_FAILURE() << "nothing thrown, wanted " << message;
  } catch (const Error& error) {
    EXPECT_EQ(error.what(), message);
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), complaint);
}

TEST(SteinerGauss, Failures) {
  const auto expect_no_path = [](const Graph& device, const std::vector<int>& path) {
    expect_error<std::runtime_error>("Path is not hamiltonian", "",
                                     [&] { synthesise(identity(device.n), device, path); });
  };
  expect_no_path(line(3), {0, 1});
  expect_no_path(line(3), {0, 2, 1});
  expect_no_path(line(3), {0, 1, 0, 2});  // passes is_ham_path, but 2 comes too late
  expect_no_path(Graph(1), {4});
  expect_no_path(graph(4, {{0, 1}, {2, 3}}), {0, 1, 2, 3});
  EXPECT_THROW(synthesise(identity(2), line(3), {0, 1, 2}), std::invalid_argument);

  const std::string no_pivot = "Error: Can't fill up this tree!\n";
  expect_error<std::logic_error>(
      "ooops", no_pivot, [] { synthesise(matrix({"110", "110", "001"}), line(3), {0, 1, 2}); });
  Rng rng(3);
  for (int trial = 0; trial < 200;
       ++trial) {  // a zero row shows up at the last column at the latest
    std::vector<int> path;
    const int n = 1 + static_cast<int>(rng() % 9);
    const Graph device = random_device(n, 20, rng, &path);
    BoolMatrix m = random_matrix(n, n, rng);
    m[rng() % at(n)] = BoolRow(at(n));
    expect_error<std::logic_error>("ooops", no_pivot, [&] { synthesise(m, device, path); });
  }
}

std::string shortcut(const Graph& device, std::vector<int> path, std::vector<int> targets,
                     int root) {
  return show(structures::shortcut_ham_path(device, path, targets, root).edges());
}

TEST(DescendingTree, ShortcutsPruningAndChecks) {
  EXPECT_EQ(shortcut(line(4), {0, 1, 2, 3}, {0, 3}, 3), "0-1 1-2 2-3");
  EXPECT_EQ(shortcut(line(4, true), {0, 1, 2, 3}, {0, 3}, 3), "0-3");
  EXPECT_EQ(shortcut(line(4), {0, 1, 2, 3}, {3}, 3), "");
  EXPECT_EQ(shortcut(line(4), {0, 1, 2, 3}, {}, 3), "");
  EXPECT_THROW(shortcut(line(4), {0, 1}, {3, 1}, 1), std::out_of_range);

  std::vector<int> path{0, 1, 2, 3, 4};
  const auto pruned = [](std::vector<int> keep) {
    Graph chain = line(5);
    structures::prune_leaves(chain, keep);
    return show(chain.edges());
  };
  EXPECT_EQ(pruned({1, 3}), "1-2 2-3");
  EXPECT_EQ(pruned({}), "");

  EXPECT_TRUE(structures::check_is_descending(line(5), path, 4));
  EXPECT_FALSE(structures::check_is_descending(line(5), path, 2));
  EXPECT_FALSE(structures::check_is_descending(line(5, true), path, 4));
  EXPECT_TRUE(structures::check_is_descending(Graph(5), path, 2));
  std::vector<int> nothing;
  EXPECT_TRUE(structures::check_is_descending(line(3, true), nothing, 0));  // ends on a ring
}

TEST(SteinerGauss, SmallHelpers) {
  EXPECT_TRUE(synthesis::check_is_upper_triangular(Table(0)));
  EXPECT_TRUE(synthesis::check_is_upper_triangular(table(matrix({"11", "01"}))));
  EXPECT_FALSE(synthesis::check_is_upper_triangular(table(matrix({"10", "11"}))));
  EXPECT_FALSE(synthesis::check_is_upper_triangular(table(matrix({"11", "00"}))));
  EXPECT_EQ(synthesis::inverse_index({4, 7, 7}, 7), 1);
  EXPECT_EQ(synthesis::inverse_index({4, 7, 7}, 0), -1);
}

}  // namespace
