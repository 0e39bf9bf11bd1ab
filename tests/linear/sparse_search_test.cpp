// The first run of the searches, whatever the effort, on matrices of few ones and on structured
// ones: no longer than the plain methods.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "support/gate_lists.h"
#include "support/graphs.h"
#include "support/oracles.h"
#include "support/tasks.h"
#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/linear/internal/row_column.h"
#include "zeltbraidwerk/linear/search/internal/cnot_search.h"
#include "zeltbraidwerk/linear/search/internal/depth_search.h"
#include "zeltbraidwerk/linear/search/internal/device_search.h"
#include "zeltbraidwerk/linear/search/internal/map_circuits.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace {

using namespace zelt::braidwerk::internal;
using support::at;
using support::map_of;
using support::random_gates;
using support::Rng;

using Case = std::pair<std::string, BitMatrix>;

/// Four words of 32 bits: word `to` gains word `from` turned left.
void add_turned(BitMatrix& m, int from, int turned, int to) {
  for (int bit = 0; bit < 32; ++bit) m.add_row(32 * from + bit, 32 * to + (bit + turned) % 32);
}
void turn(BitMatrix& m, int word, int by) {
  const BitMatrix old = m;
  for (int bit = 0; bit < 32; ++bit) {
    std::copy_n(old.row(32 * word + bit), m.stride(), m.row(32 * word + (bit + by) % 32));
  }
}
/// What word `from` holds shifted left.
void add_shifted(BitMatrix& m, int from, int shift, int to) {
  for (int bit = 0; bit + shift < 32; ++bit) m.add_row(32 * from + bit, 32 * to + bit + shift);
}

/// The linear layer of a block cipher, as its definition has it.
BitMatrix serpent() {
  BitMatrix m = BitMatrix::identity(128);
  turn(m, 0, 13);
  turn(m, 2, 3);
  for (const int from : {0, 2}) add_turned(m, from, 0, 1);
  add_turned(m, 2, 0, 3);
  add_shifted(m, 0, 3, 3);
  turn(m, 1, 1);
  turn(m, 3, 7);
  for (const int from : {1, 3}) add_turned(m, from, 0, 0);
  add_turned(m, 3, 0, 2);
  add_shifted(m, 1, 7, 2);
  turn(m, 0, 5);
  turn(m, 2, 22);
  return m;
}

/// Invertible ones with a one for each (r, c) that is told; the diagonal beside it.
template <class F>
BitMatrix triangular(int n, F&& one) {
  BitMatrix m = BitMatrix::identity(n);
  for (int r = 0; r < n; ++r) {
    for (int c = 0; c < r; ++c) m.set(r, c, one(r, c));
  }
  return m;
}

std::vector<Case> structured(Rng& rng) {
  std::vector<Case> cases;
  for (const int n : {8, 20, 48, 70, 128}) {
    const std::string size = " on " + std::to_string(n);
    for (const int gates : {n / 4, n, 2 * n}) {
      cases.emplace_back(std::to_string(gates) + " gates" + size,
                         map_of(random_gates(n, gates, nullptr, false, rng), n));
    }
    BitMatrix blocks = BitMatrix::identity(n);
    for (int first = 0; first + 4 <= n; first += 4) {
      for (const Gate& gate : random_gates(4, 12, nullptr, false, rng)) {
        blocks.add_row(first + wire_of(gate.a), first + wire_of(gate.b));
      }
    }
    cases.emplace_back("blocks" + size, blocks);
    const std::vector<int> order = support::shuffled(n, rng);
    BitMatrix permutation(n, n);
    BitMatrix companion(n, n);
    for (int r = 0; r < n; ++r) {
      permutation.set(r, order[at(r)]);
      companion.set(r, (r + 1) % n);
      if (r % 3 == 1) companion.set(n - 1, r);
    }
    cases.emplace_back("a permutation" + size, permutation);
    cases.emplace_back("a companion" + size, companion);
    cases.emplace_back("a ladder" + size, triangular(n, [](int, int) { return true; }));
    cases.emplace_back("a triangle" + size,
                       triangular(n, [&](int, int) { return rng() % 9 == 0; }));
    cases.emplace_back("Toeplitz" + size,
                       triangular(n, [](int r, int c) { return r - c == 1 || r - c == 5; }));
  }
  cases.emplace_back("Serpent", serpent());
  return cases;
}

TEST(FirstRun, IsNoLongerThanTheEliminationByPairs) {
  Rng rng(1);
  const Effort none = support::steps(0);
  for (const auto& [name, m] : structured(rng)) {
    SCOPED_TRACE(name);
    const GateList pairs = by_pairs(m, Facing::plain);
    for (const bool exact : {false, true}) {
      const Task task{.outputs = support::outputs(exact), .seed = 1};
      const GateList found = search_cnot(m, task, none);
      EXPECT_TRUE(support::implements(found, m.unpack(), exact));
      EXPECT_LE(found.count(), pairs.count()) << exact;
      const auto front = search_shallow_cnot(m, task, none);
      EXPECT_LE(front[0].depth, depth_of(pairs.gates, m.rows())) << exact;
      EXPECT_TRUE(exact || name != "Serpent" || found.count() <= 246);
    }
  }
}

TEST(FirstRun, OnADeviceIsNoLongerThanThePlainMethodOfItsDraws) {
  Rng rng(2);
  const Effort none = support::steps(0);
  for (int k = 0; k < 30; ++k) {
    const int n = 6 + k % 15;
    const BitGraph graph{k % 2 == 0 ? support::line(n) : support::random_device(n, 20, rng)};
    const BitMatrix m = k % 3 == 0 ? map_of(random_gates(n, n, nullptr, false, rng), n)
                                   : BitMatrix::pack(support::random_invertible(n, rng), n, n);
    for (const bool free : {false, true}) {
      SeededDraw draws(7, 0);
      FreeCircuit plain(n);
      row_column_synthesis(m, graph, {.free = free}, std::ref(draws), Control{}, plain);
      const Task task{.outputs = support::outputs(!free), .device = &graph, .seed = 7};
      const GateList found = search_cnot_on_device(m, task, none);
      EXPECT_LE(found.gates.size(), plain.circuit.gates.size()) << k;
    }
  }
}

TEST(PlainRun, OnADeviceKeepsToItsEdgesAndToWhatIsToBeCleared) {
  Rng rng(3);
  for (int n = 0; n < 40; ++n) {
    const BitGraph graph{n % 3 == 0 ? support::line(n) : support::random_device(n, 20, rng)};
    for (const int gates : {0, 1, n * n}) {
      const BitMatrix m = map_of(random_gates(n, n < 2 ? 0 : gates, &graph, false, rng), n);
      const FreeCircuit found = cleared_along_tree(m, graph);
      EXPECT_TRUE(support::implements_up_to(found.circuit, found.perm, m.unpack())) << n;
      EXPECT_TRUE(std::ranges::is_sorted(found.perm));
      for (const auto& [a, b] : found.circuit.gates) EXPECT_TRUE(graph.joined(a, b));
      EXPECT_TRUE(gates > 0 || found.circuit.gates.empty());
      EXPECT_TRUE(gates > 1 || found.circuit.gates.size() <= 4 * support::at(n)) << n;
    }
  }
}

}  // namespace
