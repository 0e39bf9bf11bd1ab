#include "zeltbraidwerk/foundations/internal/bit_matrix.h"

#include <gtest/gtest.h>

#include "support/oracles.h"
#include "zeltbraidwerk/foundations/internal/echelon.h"

namespace {

using support::at;
using namespace zelt::braidwerk::internal;

// Sizes around the borders of words.
constexpr int sizes[] = {0, 1, 5, 63, 64, 65, 130};

TEST(BitMatrix, PacksTheLeadingBlockAndLeavesTheRest) {
  support::Rng rng(21);
  for (const int rows : {0, 1, 4}) {
    for (const int cols : sizes) {
      const BoolMatrix m = support::random_matrix(rows + 1, cols + 70, rng);
      const BitMatrix packed = BitMatrix::pack(m, rows, cols);
      BoolMatrix block = m;
      block.resize(at(rows));
      for (BoolRow& row : block) row.resize(at(cols));
      EXPECT_EQ(packed.unpack(), block);
      EXPECT_EQ(packed, BitMatrix::pack(block, rows, cols)) << "bits beyond the block leaked in";

      BoolMatrix target = support::random_matrix(rows + 1, cols + 70, rng);
      BoolMatrix expected = target;
      for (int r = 0; r < rows; ++r) {
        std::copy_n(m[at(r)].begin(), cols, expected[at(r)].begin());
      }
      packed.unpack_into(target);
      EXPECT_EQ(target, expected);
    }
  }
}

TEST(BitMatrix, RowsAtAnyPlaceOfABitVector) {
  support::Rng rng(22);
  for (const int count : sizes) {
    for (const int first : {0, 1, 37, 64, 100}) {
      for (const int second : {230, 256, 331}) {
        const BoolRow before = support::random_matrix(1, 500, rng).front();
        BoolRow row = before;
        add_bits(row, at(first), row, at(second), count);
        std::vector<Word> words(at(words_for(count)) + 1);
        pack_row(row, at(second), count, words.data());
        for (int k = 0; k < 500; ++k) {
          const bool inside = k >= second && k < second + count;
          ASSERT_EQ(row[at(k)], before[at(k)] != (inside && before[at(k - second + first)]));
          if (!inside) continue;
          ASSERT_EQ(row[at(k)], words[at(k - second) / 64] >> ((k - second) % 64) & 1);
        }
        unpack_row(words.data(), at(first), count, row);
        for (int k = 0; k < count; ++k) ASSERT_EQ(row[at(first + k)], row[at(second + k)]);
      }
    }
  }
}

TEST(BitMatrix, SolvesEquations) {
  support::Rng rng(4);
  for (const int n : {0, 1, 2, 63, 64, 65, 130}) {
    const BoolMatrix m = support::random_invertible(n, rng);
    const BoolMatrix x = support::random_matrix(n, 1, rng);
    const BitMatrix b = product(BitMatrix::pack(m, n, n), BitMatrix::pack(x, n, 1));
    EXPECT_EQ(solution(BitMatrix::pack(m, n, n), b).transposed(), BitMatrix::pack(x, n, 1)) << n;
  }
}

/// The same pivots and rows as column after column, also those without a pivot, and on both sides.
TEST(BitMatrix, ReducesToEchelonForm) {
  support::Rng rng(5);
  const auto any = [&rng](int bound) { return static_cast<int>(rng() % at(bound)); };
  for (const int rows : {0, 1, 2, 20, 64, 130, 300}) {
    for (const int cols : {0, 1, 40, 130, 300}) {
      BitMatrix a = BitMatrix::pack(support::random_matrix(rows, cols, rng), rows, cols);
      BitMatrix b = BitMatrix::pack(support::random_matrix(rows, 70, rng), rows, 70);
      for (int r = 1; r < rows; r += 3) a.add_row(any(r), r), a.add_row(r, any(r));
      for (int c = 0; c < cols; ++c) {
        for (int r = 0; c % 5 == 0 && r < rows; ++r) a.set(r, c, false);
      }
      BitMatrix reduced = a, along = b;
      const std::vector<int> pivots = reduce_to_echelon(reduced, along);

      std::vector<int> expected;
      for (int c = 0, top = 0; c < cols; ++c) {
        int r = top;
        while (r < rows && !a.get(r, c)) ++r;
        if (r == rows) continue;
        a.swap_rows(r, top);
        b.swap_rows(r, top);
        for (int k = 0; k < rows; ++k) {
          if (k != top && a.get(k, c)) a.add_row(top, k), b.add_row(top, k);
        }
        expected.push_back(c);
        ++top;
      }
      EXPECT_EQ(pivots, expected) << rows << ' ' << cols;
      EXPECT_EQ(reduced, a) << rows << ' ' << cols;
      EXPECT_EQ(along, b) << rows << ' ' << cols;
    }
  }
}

TEST(BitMatrix, AgreesWithBitLoops) {
  support::Rng rng(23);
  for (const int rows : sizes) {
    for (const int cols : sizes) {
      const BoolMatrix m = support::random_matrix(rows, cols, rng);
      const BitMatrix packed = BitMatrix::pack(m, rows, cols);
      const BitMatrix transposed = packed.transposed();
      int ones = 0;
      for (int r = 0; r < rows; ++r) {
        int in_row = 0;
        for (int c = 0; c < cols; ++c) {
          ASSERT_EQ(packed.get(r, c), m[at(r)][at(c)]);
          ASSERT_EQ(transposed.get(c, r), m[at(r)][at(c)]);
          in_row += m[at(r)][at(c)];
        }
        ones += in_row;
        ASSERT_EQ(packed.row_weight(r), in_row);
      }
      EXPECT_EQ(packed.weight(), ones);
      EXPECT_EQ(transposed.transposed(), packed);
      if (rows == 0 || cols == 0) continue;

      BitMatrix changed = packed;
      BoolMatrix expected = m;
      const auto any = [&rng](int bound) { return static_cast<int>(rng() % at(bound)); };
      for (int repeat = 0; repeat < 5; ++repeat) {
        const int a = any(rows), b = any(rows), p = any(cols), q = any(cols), from = any(cols);
        changed.add_row(a, b, from);
        for (int c = from; c < cols; ++c) {
          expected[at(b)][at(c)] = expected[at(b)][at(c)] != expected[at(a)][at(c)];
        }
        changed.add_col(p, q);
        ColumnOperation(expected, p, q, rows);
        changed.swap_rows(a, b);
        std::swap(expected[at(a)], expected[at(b)]);
        changed.flip(a, p);
        expected[at(a)][at(p)].flip();
      }
      EXPECT_EQ(changed.unpack(), expected);

      const int r = any(rows), c = any(cols), height = any(rows - r + 1), width = any(cols - c + 1);
      const BitMatrix block = packed.block(r, c, height, width);
      for (int k = 0; k < height; ++k) {
        const auto first = m[at(r + k)].begin() + c;
        EXPECT_EQ(block.unpack()[at(k)], BoolRow(first, first + width));
      }
    }
  }
}

}  // namespace
