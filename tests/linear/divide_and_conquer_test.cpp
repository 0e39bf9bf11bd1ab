#include "zeltbraidwerk/linear/divide_and_conquer.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <numeric>

#include "support/oracles.h"
#include "zeltbraidwerk/graphs/blossom.h"
#include "zeltbraidwerk/linear/internal/block_recursion.h"

namespace {

using support::at;
using support::matrix;
using testing::ElementsAre;
using testing::IsEmpty;
using Pairs = std::vector<std::tuple<int, int>>;
using Table = std::vector<std::vector<int>>;

Table table(int n) {
  return {at(n), std::vector<int>(at(n), -1)};
}

bool zero(const BoolMatrix& q) {
  return std::ranges::all_of(q, [](const BoolRow& r) { return std::ranges::count(r, true) == 0; });
}

/// The layers that clear a block, an entry at a time: `row` and `col` are the rows of m for which
/// the first row and the first column of q stand.
void clear_block(BoolMatrix& q, BoolMatrix& m, Pairs& gates, int row, int col, const int* labels) {
  const int rows = static_cast<int>(q.size());
  const int cols = static_cast<int>(q[0].size());
  const int n = rows + cols;
  const auto add = [&](int control, int target) {
    RowOperation(m, control, target, n);
    gates.emplace_back(labels[control], labels[target]);
  };
  Table mixed = table(n);
  while (!zero(q)) {
    std::vector<bool> row_used(at(rows));
    std::vector<bool> col_used(at(cols));
    for (const bool by_rows : {true, false}) {
      const int size = by_rows ? rows : cols;
      const auto saving = [&](int a, int b) {
        return by_rows ? SavingRowOperation(q, a, b, cols) : SavingColumnOperation(q, a, b, rows);
      };
      Table weights = table(size);
      bool any = false;
      for (int a = 0; a < size; ++a) {
        for (int b = 0; b < size; ++b) {
          if (a == b || saving(a, b) < 1) continue;
          weights[at(a)][at(b)] = saving(a, b);
          any = true;
        }
      }
      Pairs pairs;
      if (any) BlossomAlgorithm(weights, size, pairs);
      for (auto [source, target] : pairs) {
        if (saving(source, target) < saving(target, source)) std::swap(source, target);
        auto& used = by_rows ? row_used : col_used;
        used[at(source)] = used[at(target)] = true;
        if (by_rows) {
          RowOperation(q, source, target, cols);
          add(source + row, target + row);
        } else {
          ColumnOperation(q, source, target, rows);
          add(target + col, source + col);
        }
      }
    }
    for (int a = 0; a < rows; ++a) {
      for (int b = 0; b < cols; ++b) {
        const bool usable = !row_used[at(a)] && !col_used[at(b)] && q[at(a)][at(b)];
        mixed[at(a)][at(rows + b)] = mixed[at(rows + b)][at(a)] = usable ? 1 : -1;
      }
    }
    Pairs pairs;
    BlossomAlgorithm(mixed, n, pairs);
    for (const auto& [a, vertex] : pairs) {
      q[at(a)][at(vertex - rows)] = !q[at(a)][at(vertex - rows)];
      add(vertex - rows + col, a + row);
    }
  }
}

BoolMatrix block(const BoolMatrix& m, int row, int col, int rows, int cols) {
  BoolMatrix result;
  for (int r = row; r < row + rows; ++r) {
    const auto begin = m[at(r)].begin() + col;
    result.emplace_back(begin, begin + cols);
  }
  return result;
}

void arrange(int n, BoolMatrix& m, int* labels) {
  for (int k = 1; k <= n / 2; ++k) {
    if (boolean_matrix_det(m, k) != 0) continue;
    for (int j = k; j < n; ++j) {
      std::swap(m[at(k - 1)], m[at(j)]);
      if (boolean_matrix_det(m, k) == 1) {
        std::swap(labels[k - 1], labels[j]);
        break;
      }
      std::swap(m[at(k - 1)], m[at(j)]);
    }
  }
}

Pairs reduce(int n, BoolMatrix m, int* labels) {
  Pairs gates;
  if (n < 2) return gates;
  arrange(n, m, labels);
  const int h = n / 2;
  const int r = n - h;
  BoolMatrix x = boolean_matrix_product(r, h, h, block(m, h, 0, r, h),
                                        boolean_matrix_inverse(h, block(m, 0, 0, h, h)));
  clear_block(x, m, gates, h, 0, labels);
  BoolMatrix y = boolean_matrix_product(h, r, r, block(m, 0, h, h, r),
                                        boolean_matrix_inverse(r, block(m, h, h, r, r)));
  clear_block(y, m, gates, 0, h, labels);
  const Pairs first = reduce(h, block(m, 0, 0, h, h), labels);
  const Pairs second = reduce(r, block(m, h, h, r, r), labels + h);
  gates.insert(gates.end(), first.begin(), first.end());
  gates.insert(gates.end(), second.begin(), second.end());
  return gates;
}

std::vector<int> identity_labels(int n) {
  std::vector<int> labels(at(n));
  std::iota(labels.begin(), labels.end(), 0);
  return labels;
}

TEST(DivideAndConquer, MatchesThePlainAlgorithmGateForGate) {
  support::Rng rng(1);
  for (int n = 0; n <= 30; ++n) {
    for (int round = 0; round < (n < 12 ? 12 : 1); ++round) {
      const BoolMatrix m = support::random_invertible(n, rng);
      std::vector<int> labels = identity_labels(n);
      std::vector<int> expected_labels = labels;
      const auto part = divide_and_conquer_synthesis_with_permutation(n, m, labels.data());
      ASSERT_EQ(part.gates, reduce(n, m, expected_labels.data())) << support::show(m);
      ASSERT_EQ(labels, expected_labels);
      ASSERT_TRUE(support::reduces(divide_and_conquer_synthesis(n, m), m));
    }
  }
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

TEST(DivideAndConquer, PermutationsCostTwoLayersOfSwapsACycle) {
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
  structures::CnotCircuit circuit(4);
  addPermutation(4, circuit, std::vector{1, 2, 3, 0}.data());
  const auto swap = [](int i, int j) { return Pairs{{i, j}, {j, i}, {i, j}}; };
  Pairs expected;  // the cycle 0 3 2 1
  for (const auto& [i, j] : Pairs{{0, 1}, {3, 2}, {3, 1}}) {
    const Pairs gates = swap(i, j);
    expected.insert(expected.end(), gates.begin(), gates.end());
  }
  EXPECT_EQ(circuit.gates, expected);
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
