#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {
namespace {

std::size_t at(int i) {
  return static_cast<std::size_t>(i);
}

/// A bit matrix with the weight of each row kept in step.
struct Lines {
  explicit Lines(BitMatrix start) : bits(std::move(start)), weights(at(bits.rows())) {
    for (int r = 0; r < bits.rows(); ++r) weights[at(r)] = bits.row_weight(r);
  }

  /// Takes a line away, and gives it without one of its ones.
  std::vector<Word> take(int r, int without) {
    bits.flip(r, without);
    std::vector<Word> line(bits.row(r), bits.row(r) + bits.stride());
    std::fill_n(bits.row(r), bits.stride(), Word{0});
    weights[at(r)] = 0;
    return line;
  }

  /// Takes a one out of line r and adds another line to it.
  void add(const std::vector<Word>& line, int r, int without) {
    bits.flip(r, without);
    for (int w = 0; w < bits.stride(); ++w) bits.row(r)[w] ^= line[at(w)];
    weights[at(r)] = bits.row_weight(r);
  }

  BitMatrix bits;
  std::vector<int> weights;
};

/// The part of a matrix that is not factorised yet, once by rows and once by columns. Rows and
/// columns that have had their pivot are empty in it.
struct Remainder {
  explicit Remainder(const BitMatrix& m) : rows(m), cols(m.transposed()) {}

  /// The (row, column) of the one with the fewest others in both, of equal ones the first in row
  /// order.
  std::optional<std::pair<int, int>> find_pivot() const {
    int lightest_col = rows.bits.rows();
    for (const int weight : cols.weights) {
      if (weight > 0) lightest_col = std::min(lightest_col, weight);
    }
    int best = 2 * rows.bits.rows() + 2;
    std::optional<std::pair<int, int>> pivot;
    for (int r = 0; r < rows.bits.rows(); ++r) {
      if (rows.weights[at(r)] + lightest_col >= best) continue;
      for_each_bit(rows.bits.row(r), rows.bits.stride(), [&](int c) {
        const int cost = rows.weights[at(r)] + cols.weights[at(c)];
        if (cost >= best) return;
        best = cost;
        pivot = {r, c};
      });
    }
    return pivot;
  }

  Lines rows;
  Lines cols;
};

}  // namespace

int lu_factorise(BitMatrix& m, std::vector<int>& pivot_rows, std::vector<int>& pivot_cols) {
  Remainder rest(m);
  for (int step = 0; step < m.rows(); ++step) {
    question_point();
    const auto pivot = rest.find_pivot();
    if (!pivot) return step;
    const auto [row, col] = *pivot;
    pivot_rows[at(step)] = row;
    pivot_cols[at(step)] = col;
    const std::vector<Word> across = rest.rows.take(row, col);
    const std::vector<Word> down = rest.cols.take(col, row);
    for_each_bit(down.data(), rest.cols.bits.stride(), [&, col = col](int r) {
      rest.rows.add(across, r, col);
      // In m itself the entry of the pivot's column stays, as the multiplier.
      for (int w = 0; w < m.stride(); ++w) m.row(r)[w] ^= across[at(w)];
    });
    for_each_bit(across.data(), m.stride(), [&, row = row](int c) { rest.cols.add(down, c, row); });
  }
  return m.rows();
}

}  // namespace zelt::braidwerk::internal
