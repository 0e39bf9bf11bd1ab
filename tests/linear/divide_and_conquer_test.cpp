#include "zeltbraidwerk/linear/divide_and_conquer.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <numeric>

#include "support/digest.h"
#include "support/oracles.h"
#include "zeltbraidwerk/linear/internal/block_recursion.h"

namespace {

using support::at;
using support::matrix;
using testing::IsEmpty;

bool zero(const BoolMatrix& q) {
  return std::ranges::all_of(q, [](const BoolRow& r) { return std::ranges::count(r, true) == 0; });
}

BoolMatrix block(const BoolMatrix& m, int row, int col, int rows, int cols) {
  return support::packed(m).block(row, col, rows, cols).unpack();
}

std::vector<int> identity_labels(int n) {
  std::vector<int> labels(at(n));
  std::iota(labels.begin(), labels.end(), 0);
  return labels;
}

TEST(DivideAndConquer, ReducesAndKeepsItsGates) {
  support::Rng rng(1);
  support::Digest gates;
  for (int n = 0; n <= 30; ++n) {
    for (int round = 0; round < (n < 12 ? 12 : 1); ++round) {
      const BoolMatrix m = support::random_invertible(n, rng);
      std::vector<int> labels = identity_labels(n);
      gates.add(divide_and_conquer_synthesis_with_permutation(n, m, labels.data()), labels);
      ASSERT_TRUE(support::reduces(divide_and_conquer_synthesis(n, m), m));
    }
  }
  EXPECT_EQ(gates.text(), "fc90c90f76864152");
}

TEST(DivideAndConquer, IsShallow) {
  support::Rng rng(2);
  for (const int n : {33, 64, 80}) {
    const BoolMatrix m = support::random_invertible(n, rng);
    const auto circuit = divide_and_conquer_synthesis(n, m);
    EXPECT_TRUE(support::reduces(circuit, m));
    EXPECT_LT(circuit.depth(), 15 + n);
    EXPECT_THAT(divide_and_conquer_synthesis(n, support::identity(n)).gates, IsEmpty());
  }
  EXPECT_EQ(divide_and_conquer_synthesis(2, matrix({"01", "10"})).gates.size(), 3u);
}

TEST(DivideAndConquer, StepsClearTheirBlocksAndTellEveryGate) {
  support::Rng rng(3);
  for (const auto& [h, r] : {std::pair{1, 1}, {2, 3}, {3, 3}, {8, 9}, {5, 2}}) {
    const int n = h + r;
    BoolMatrix m = support::random_invertible(n, rng);
    std::vector<int> perm = identity_labels(n);
    const BoolMatrix input = m;
    setup(n, m, perm.data());
    for (int k = 1; k <= n / 2; ++k) EXPECT_EQ(boolean_matrix_det(m, k), 1);
    for (int row = 0; row < n; ++row) EXPECT_EQ(m[at(row)], input[at(perm[at(row)])]);
    if (boolean_matrix_det(m, h) == 0) continue;

    // Gates on labels of our own, so that those of the wrong rows would show.
    std::ranges::reverse(perm);
    structures::CnotCircuit circuit(n);
    BoolMatrix x = boolean_matrix_product(r, h, h, block(m, h, 0, r, h),
                                          boolean_matrix_inverse(h, block(m, 0, 0, h, h)));
    BoolMatrix replay = m;
    SynthesizeWestSouthBlock(x, m, circuit, n, h, r, perm.data());
    EXPECT_TRUE(zero(x) && zero(block(m, h, 0, r, h)));
    BoolMatrix y = boolean_matrix_product(h, r, r, block(m, 0, h, h, r),
                                          boolean_matrix_inverse(r, block(m, h, h, r, r)));
    SynthesizeEastNorthBlock(y, m, circuit, n, h, r, perm.data());
    EXPECT_TRUE(zero(y) && zero(block(m, h, 0, r, h)) && zero(block(m, 0, h, h, r)));
    for (const auto& [control, target] : circuit.gates) {
      const auto row_of = [&](int label) {
        return static_cast<int>(std::ranges::find(perm, label) - perm.begin());
      };
      support::add_row(replay, row_of(control), row_of(target));
    }
    EXPECT_EQ(replay, m);
  }
}

TEST(DivideAndConquer, PermutationsTakeTwoLayersOfSwaps) {
  support::Rng rng(4);
  for (int n = 0; n < 30; ++n) {
    std::vector<int> perm = identity_labels(n);
    std::ranges::shuffle(perm, rng);
    structures::CnotCircuit circuit(n);
    addPermutation(n, circuit, perm.data());
    const BoolMatrix m = support::operator_of(circuit);
    for (int i = 0; i < n; ++i) EXPECT_TRUE(m[at(i)][at(perm[at(i)])]);
    EXPECT_LE(circuit.depth(), 6);
  }
}

TEST(DivideAndConquer, EndsOnSingularInputAndWhenTold) {
  support::Rng rng(5);
  for (const int n : {2, 3, 9, 40}) {
    BoolMatrix singular = support::random_matrix(n, n, rng);
    singular[at(n - 1)] = singular[0];
    for (const auto& m :
         {singular, BoolMatrix(at(n), BoolRow(at(n), true)), BoolMatrix(at(n), BoolRow(at(n)))}) {
      EXPECT_EQ(divide_and_conquer_synthesis(n, m).nbqbits, n);
    }
  }
  using namespace zelt::braidwerk::internal;
  const std::atomic<bool> stop = true;
  Control control;
  control.stop = &stop;
  BlockRecursion::Gates gates;
  std::vector<int> labels = identity_labels(9);
  const BoolMatrix m = support::random_invertible(9, rng);
  EXPECT_FALSE(BlockRecursion(gates, control).reduce(BitMatrix::pack(m, 9, 9), labels.data()));
}

}  // namespace
