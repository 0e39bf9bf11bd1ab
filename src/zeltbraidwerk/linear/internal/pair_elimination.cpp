#include "zeltbraidwerk/linear/internal/pair_elimination.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <span>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/linear/internal/mirrored.h"

namespace zelt::braidwerk::internal {
namespace {

/// The entries of a row in up to 64 columns from `col` on.
Word window(const BitMatrix& m, int row, int col) {
  const int width = std::min(m.cols() - col, word_bits);
  return width > 0 ? read_bits(m.row(row), static_cast<std::size_t>(col), width) : 0;
}

/// The recursive split of a set of rows, column by column. Columns on which all rows of a set agree
/// are skipped: a set is cut at the lowest bit in which two of its keys differ.
class RowMatcher {
 public:
  RowMatcher(const BitMatrix& m, std::vector<RowPair>& pairs) : m_(m), pairs_(pairs) {}

  /// Appends the pairs for `rows`, which are compared from column `col` on. Returns the smallest of
  /// them, which stays unmatched, or -1 when there are none.
  int match(const std::vector<int>& rows, int col) {
    if (rows.size() < 2) return rows.empty() ? -1 : rows.front();
    entries_.clear();
    for (const int r : rows) entries_.push_back({window(m_, r, col), r});
    spare_.resize(entries_.size());
    return split(0, entries_.size(), col);
  }

 private:
  struct Entry {
    Word key;  // the entries of the row in the 64 columns looked at
    int row;
  };

  int pair(int a, int b) {
    pairs_.emplace_back(std::min(a, b), std::max(a, b));
    return std::min(a, b);
  }

  /// `col` is the first column of the keys.
  int split(std::size_t first, std::size_t last, int col) {
    Entry* const entries = entries_.data();
    if (last - first == 1) return entries[first].row;
    if (last - first == 2) return pair(entries[first].row, entries[first + 1].row);
    Word difference = 0;
    for (std::size_t k = first + 1; k < last; ++k) {
      difference |= entries[k].key ^ entries[first].key;
    }
    if (difference == 0) return split_further_right(first, last, col + word_bits);

    const std::size_t middle = cut(first, last, std::countr_zero(difference));
    // The longer list of pairs comes first, that of the ones when they are equally long.
    if (middle - first > last - middle) {
      const int zero = split(first, middle, col);
      return pair(zero, split(middle, last, col));
    }
    const int one = split(middle, last, col);
    return pair(one, split(first, middle, col));
  }

  int split_further_right(std::size_t first, std::size_t last, int col) {
    if (col < m_.cols()) {
      for (std::size_t k = first; k < last; ++k) {
        entries_[k].key = window(m_, entries_[k].row, col);
      }
      return split(first, last, col);
    }
    // Equal rows, in a singular matrix only: the first of them clears the others.
    const std::span<Entry> equal(entries_.data() + first, last - first);
    std::ranges::sort(equal, {}, &Entry::row);
    for (const Entry& other : equal.subspan(1)) pair(equal[0].row, other.row);
    return equal[0].row;
  }

  /// Brings the entries whose key has the bit unset to the front; returns where the others begin.
  std::size_t cut(std::size_t first, std::size_t last, int bit) {
    std::size_t zeros = first;
    std::size_t ones = 0;
    for (std::size_t k = first; k < last; ++k) {
      const Entry entry = entries_[k];
      const std::size_t set = (entry.key >> bit) & 1;
      entries_[zeros] = entry;
      spare_[ones] = entry;
      zeros += 1 - set;
      ones += set;
    }
    std::copy_n(spare_.begin(), ones, entries_.begin() + static_cast<std::ptrdiff_t>(zeros));
    return zeros;
  }

  const BitMatrix& m_;
  std::vector<RowPair>& pairs_;
  std::vector<Entry> entries_;
  std::vector<Entry> spare_;
};

void rows_with_one(const BitMatrix& m, int col, std::vector<int>& rows) {
  rows.clear();
  for (int r = col; r < m.rows(); ++r) {
    if (m.get(r, col)) rows.push_back(r);
  }
}

/// The row below the diagonal, with a one in column i, that agrees with row i on the longest run of
/// columns after it; ties: the first. -1 for none.
int best_repair(const BitMatrix& m, int i) {
  int best = -1;
  int longest = -1;
  for (int r = i + 1; r < m.rows(); ++r) {
    if (!m.get(r, i)) continue;
    int run = m.cols();
    Word mask = ~low_bits(i % word_bits) << 1;  // the columns after i
    for (int w = i / word_bits; w < m.stride(); ++w, mask = ~Word{0}) {
      const Word difference = (m.row(r)[w] ^ m.row(i)[w]) & mask;
      if (difference != 0) {
        run = w * word_bits + std::countr_zero(difference);
        break;
      }
    }
    if (run > longest) {
      longest = run;
      best = r;
    }
  }
  return best;
}

/// Clears the entries below the diagonal, column by column; appends the operations. What lies left
/// of the column in work is zero in the rows concerned.
void clear_below(BitMatrix& m, std::vector<RowPair>& operations) {
  RowMatcher matcher(m, operations);
  std::vector<int> rows;
  for (int col = 0; col < m.rows(); ++col) {
    std::size_t done = operations.size();
    stop_point();
    if (!m.get(col, col)) {
      const int repair = best_repair(m, col);
      if (repair < 0) continue;
      m.add_row(repair, col, col);
      operations.emplace_back(repair, col);
      ++done;
    }
    rows_with_one(m, col, rows);
    matcher.match(rows, col + 1);
    for (; done < operations.size(); ++done) {
      const auto [a, b] = operations[done];
      m.add_row(a, b, col);
    }
  }
}

}  // namespace

std::vector<RowPair> match_rows(const BitMatrix& m, int col, std::vector<int>& rows) {
  std::vector<RowPair> pairs;
  const int rest = RowMatcher(m, pairs).match(rows, col);
  if (rest >= 0) rows.assign(1, rest);
  return pairs;
}

std::vector<RowPair> match_column(const BitMatrix& m, int col) {
  std::vector<int> rows;
  rows_with_one(m, col, rows);
  return match_rows(m, col + 1, rows);
}

RowPair choose_pair(const BitMatrix& m, int start) {
  std::vector<int> rows(static_cast<std::size_t>(std::max(m.rows() - start, 0)));
  std::iota(rows.begin(), rows.end(), start);
  if (rows.size() < 2) return {-1, -1};
  for (int col = start; rows.size() > 2 && col < m.cols(); ++col) {
    const auto middle =
        std::stable_partition(rows.begin(), rows.end(), [&](int r) { return m.get(r, col); });
    if (middle - rows.begin() < 2) {
      rows.erase(rows.begin(), middle);
    } else {
      rows.erase(middle, rows.end());
    }
  }
  return {rows[0], rows[1]};
}

std::vector<RowPair> pair_elimination(BitMatrix& m) {
  std::vector<RowPair> operations;
  clear_below(m, operations);
  // What is left is upper triangular.
  const std::size_t lower = operations.size();
  m = mirrored(m);
  clear_below(m, operations);
  m = mirrored(m);
  const int last = m.rows() - 1;
  for (auto& [a, b] : std::span(operations).subspan(lower)) {
    a = last - a;
    b = last - b;
  }
  return operations;
}

}  // namespace zelt::braidwerk::internal
