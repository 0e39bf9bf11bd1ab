#include "zeltbraidwerk/linear/internal/block_recursion.h"

#include <algorithm>
#include <utility>

namespace zelt::braidwerk::internal {

/// A block in work, and the lines that took part in the pass in work.
struct BlockRecursion::Block {
  BitMatrix& q;
  BitMatrix& m;
  int first_row;
  int first_col;
  const int* labels;
  std::vector<bool> row_used;
  std::vector<bool> col_used;
};

void BlockRecursion::emit(const Block& block, int control, int target) {
  block.m.add_row(control, target);
  gates_.emplace_back(block.labels[control], block.labels[target]);
}

/// One layer of additions among the rows of `lines`: a matching for the ones that they remove.
///
/// The lighter row of a pair is added to the heavier one, which removes more; of equal ones the
/// first to the second.
template <class Add>
void BlockRecursion::add_lines(BitMatrix& lines, std::vector<bool>& used, Add add) {
  used.assign(static_cast<std::size_t>(lines.rows()), false);
  std::vector<int> weights;
  weights.reserve(used.size());
  for (int a = 0; a < lines.rows(); ++a) weights.push_back(lines.row_weight(a));
  const auto weight_of = [&](int a) { return weights[static_cast<std::size_t>(a)]; };

  Matcher& matcher = this->matcher(lines.rows());
  auto saving = matcher.weights().begin();
  bool any = false;
  for (int a = 0; a < lines.rows(); ++a) {
    *saving++ = -1;
    for (int b = a + 1; b < lines.rows(); ++b) {
      const int saved = std::max(weight_of(a), weight_of(b)) -
                        weight_of_sum(lines.row(a), lines.row(b), lines.stride());
      *saving++ = saved > 0 ? saved : -1;
      any = any || saved > 0;
    }
  }
  if (!any) return;
  pairs_.clear();
  matcher.run(pairs_);
  for (const auto& [a, b] : pairs_) {
    const bool swap = weight_of(a) > weight_of(b);
    const int source = swap ? b : a;
    const int target = swap ? a : b;
    lines.add_row(source, target);
    add(source, target);
    used[static_cast<std::size_t>(a)] = used[static_cast<std::size_t>(b)] = true;
  }
}

void BlockRecursion::add_rows(Block& block) {
  add_lines(block.q, block.row_used, [&](int source, int target) {
    emit(block, source + block.first_row, target + block.first_row);
  });
}

/// A column addition on the quotient is the opposite row addition on the divisor.
void BlockRecursion::add_columns(Block& block) {
  BitMatrix columns = block.q.transposed();
  add_lines(columns, block.col_used, [&](int source, int target) {
    emit(block, target + block.first_col, source + block.first_col);
  });
  block.q = columns.transposed();
}

/// Single entries, at most one in a line, among the lines that the pass left alone.
void BlockRecursion::add_single_entries(Block& block) {
  const int rows = block.q.rows();
  const int size = rows + block.q.cols();
  Matcher& matcher = this->matcher(size);
  auto weight = matcher.weights().begin();
  bool any = false;
  for (int i = 0; i < size; ++i) {
    const bool free_row = i < rows && !block.row_used[static_cast<std::size_t>(i)];
    for (int j = i; j < size; ++j) {
      const int col = j - rows;
      const bool usable = free_row && col >= 0 && block.q.get(i, col) &&
                          !block.col_used[static_cast<std::size_t>(col)];
      *weight++ = usable ? 1 : -1;
      any = any || usable;
    }
  }
  if (!any) return;
  pairs_.clear();
  matcher.run(pairs_);
  for (const auto& [row, vertex] : pairs_) {
    block.q.flip(row, vertex - rows);
    emit(block, vertex - rows + block.first_col, row + block.first_row);
  }
}

bool BlockRecursion::clear_block(BitMatrix& q, BitMatrix& m, int first_row, int first_col,
                                 const int* labels) {
  Block block{q, m, first_row, first_col, labels, {}, {}};
  // Each pass removes a one: a pair saves at least one, and where no pair saves, no line is used
  // and any single entry can go.
  while (q.weight() != 0) {
    if (control_.stop_requested()) return false;
    add_rows(block);
    add_columns(block);
    add_single_entries(block);
  }
  return true;
}

bool BlockRecursion::reduce(BitMatrix m, int* labels) {
  const int n = m.rows();
  if (n < 2) return true;
  make_leading_blocks_invertible(m, labels);
  const int h = n / 2;
  const int r = n - h;
  BitMatrix quotient = product(m.block(h, 0, r, h), inverse(m.block(0, 0, h, h)));
  if (!clear_block(quotient, m, h, 0, labels)) return false;
  quotient = product(m.block(0, h, h, r), inverse(m.block(h, h, r, r)));
  if (!clear_block(quotient, m, 0, h, labels)) return false;
  return reduce(m.block(0, 0, h, h), labels) && reduce(m.block(h, h, r, r), labels + h);
}

void make_leading_blocks_invertible(BitMatrix& m, int* labels) {
  // A leading block is invertible when elimination without swaps passes through it.
  const int n = m.rows();
  BitMatrix reduced = m.block(0, 0, n, n / 2);
  for (int k = 0; k < n / 2; ++k) {
    int pivot = k;
    while (pivot < n && !reduced.get(pivot, k)) ++pivot;
    if (pivot == n) return;
    if (pivot != k) {
      m.swap_rows(k, pivot);
      reduced.swap_rows(k, pivot);
      std::swap(labels[k], labels[pivot]);
    }
    for (int r = k + 1; r < n; ++r) {
      if (reduced.get(r, k)) reduced.add_row(k, r, k);
    }
  }
}

void add_permutation(int n, const int* perm, BlockRecursion::Gates& gates) {
  const auto swap = [&gates](int i, int j) {
    gates.emplace_back(i, j);
    gates.emplace_back(j, i);
    gates.emplace_back(i, j);
  };
  const auto size = static_cast<std::size_t>(std::max(n, 0));
  std::vector<int> inverse(size);
  for (int i = 0; i < n; ++i) inverse[static_cast<std::size_t>(perm[i])] = i;
  std::vector<bool> seen(size);
  for (int start = 0; start < n; ++start) {
    std::vector<int> cycle;
    for (int x = start; !seen[static_cast<std::size_t>(x)];
         x = inverse[static_cast<std::size_t>(x)]) {
      seen[static_cast<std::size_t>(x)] = true;
      cycle.push_back(x);
    }
    // A cycle is the product of two reflections.
    const std::size_t length = cycle.size();
    for (std::size_t t = 0; t < length / 2; ++t) swap(cycle[t], cycle[length - 1 - t]);
    for (std::size_t t = 1; 2 * t < length; ++t) swap(cycle[t], cycle[length - t]);
  }
}

}  // namespace zelt::braidwerk::internal
