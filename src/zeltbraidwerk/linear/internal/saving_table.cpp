#include "zeltbraidwerk/linear/internal/saving_table.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/linear/internal/cell_rows.h"

namespace zelt::braidwerk::internal {
namespace {

ZELTBRAIDWERK_CLONES
Cell largest_of(const Cell* row, std::size_t stride) {
  return largest_cell(row, stride);
}

ZELTBRAIDWERK_CLONES
int count_equal(const Cell* row, std::size_t stride, Cell value) {
  int count = 0;
  for (std::size_t k = 0; k < stride; ++k) count += row[k] == value;
  return count;
}

ZELTBRAIDWERK_CLONES
void add_pair_savings(const Word* lines, int words, const int* weights, int n, bool backward,
                      Cell* cells, std::size_t stride) {
  for (int a = 0; a < n; ++a) {
    for (int b = a + 1; b < n; ++b) {
      const int both = distance(lines + a * words, lines + b * words, words);
      Cell& there = cells[static_cast<std::size_t>(a) * stride + static_cast<std::size_t>(b)];
      Cell& back = cells[static_cast<std::size_t>(b) * stride + static_cast<std::size_t>(a)];
      there = static_cast<Cell>(there + weights[backward ? a : b] - both);
      back = static_cast<Cell>(back + weights[backward ? b : a] - both);
    }
  }
}

/// How much nearer each line is to `after` than to `before`.
ZELTBRAIDWERK_CLONES
void find_approach(const Word* lines, int words, const Word* before, const Word* after, int n,
                   Cell* approach) {
  for (int a = 0; a < n; ++a) {
    const Word* line = lines + a * words;
    approach[a] = static_cast<Cell>(distance(line, before, words) - distance(line, after, words));
  }
}

ZELTBRAIDWERK_CLONES
void add_to_row(Cell* __restrict row, const Cell* __restrict change, Cell shift, int n) {
  for (int k = 0; k < n; ++k) row[k] = static_cast<Cell>(row[k] + change[k] + shift);
}

ZELTBRAIDWERK_CLONES
void add_changes(const Word* before, const Word* after, bool backward, Cell* cells, Cell* largest,
                 int n, std::size_t stride, Cell* bits, Cell* changes) {
  fill_changes(before, after, n, stride, backward, bits, changes);
  for (int k = 0; k < n; ++k) {
    const std::size_t kind = change_kind(before, after, k);
    if (kind == 0 && !backward) continue;
    const Cell* __restrict change = changes + kind * stride;
    Cell* __restrict row = cells + static_cast<std::size_t>(k) * stride;
    const Cell diagonal = row[k];
    for (std::size_t c = 0; c < stride; ++c) row[c] = static_cast<Cell>(row[c] + change[c]);
    row[k] = diagonal;
    largest[k] = largest_cell(row, stride);
  }
}

}  // namespace

SavingTable::SavingTable(int n)
    : n_(std::max(n, 0)),
      stride_((static_cast<std::size_t>(n_) + cell_lanes - 1) / cell_lanes * cell_lanes),
      cells_(static_cast<std::size_t>(n_) * stride_, no_saving),
      largest_(static_cast<std::size_t>(n_), no_saving) {
  for (int i = 0; i < n; ++i) {
    std::fill_n(row(i), n, Cell{0});
    set(i, i, -2 * n);
  }
}

void SavingTable::find_largest() {
  for (int i = 0; i < n_; ++i) largest_.data()[i] = largest_of(row(i), stride_);
}

void SavingTable::add_savings(const BitMatrix& lines, const int* weights, Direction direction) {
  if (n_ == 0) return;
  add_pair_savings(lines.row(0), lines.stride(), weights, n_, direction == Direction::Backward,
                   cells_.data(), stride_);
  find_largest();
}

void SavingTable::line_changed(const BitMatrix& lines, int k, const Word* before,
                               Direction direction) {
  const Word* after = lines.row(k);
  std::vector<Cell> approach(stride_);
  find_approach(lines.row(0), lines.stride(), before, after, n_, approach.data());
  const auto growth =
      static_cast<Cell>(weight(after, lines.stride()) - weight(before, lines.stride()));
  const bool forward = direction == Direction::Forward;

  const Cell diagonal = at(k, k);
  add_to_row(row(k), approach.data(), forward ? Cell{0} : growth, n_);
  row(k)[k] = diagonal;
  largest_.data()[k] = largest_of(row(k), stride_);

  for (int a = 0; a < n_; ++a) {
    if (a == k) continue;
    Cell& cell = row(a)[k];
    Cell& largest = largest_.data()[a];
    const Cell old = cell;
    cell = static_cast<Cell>(cell + approach.data()[a] + (forward ? growth : 0));
    if (cell >= largest) {
      largest = cell;
    } else if (old == largest) {
      largest = largest_of(row(a), stride_);
    }
  }
}

void SavingTable::place_changed(const Word* before, const Word* after, Direction direction) {
  std::vector<Cell> room(6 * stride_);
  add_changes(before, after, direction == Direction::Backward, cells_.data(), largest_.data(), n_,
              stride_, room.data(), room.data() + 2 * stride_);
}

void Savings::add(const Lines& lines, SavingTable::Direction direction) {
  for (const bool row : {false, true}) {
    const bool of = direction == SavingTable::Direction::Forward ? row : !row;
    side[row].add_savings(lines.side(of), lines.weights(of), direction);
  }
}

void Savings::apply(Lines& lines, LineAddition addition, SavingTable::Direction direction) {
  const BitMatrix& changing = lines.side(addition.row);
  const Word* line = changing.row(addition.to);
  const std::vector<Word> before(line, line + changing.stride());
  lines.add(addition);
  const bool row = direction == SavingTable::Direction::Forward ? addition.row : !addition.row;
  side[row].line_changed(changing, addition.to, before.data(), direction);
  side[!row].place_changed(before.data(), line, direction);
}

LineAddition Savings::draw_largest(bool only_gains, const Draw& draw) const {
  const int n = side[0].size();
  if (n < 2) return no_addition;
  Cell best = no_saving;
  for (const SavingTable& table : side) {
    best = std::max(best, largest_of(table.largest(), static_cast<std::size_t>(n)));
  }
  if (only_gains && best <= 0) return no_addition;

  const auto ties_in = [&](bool row, int i) {
    const SavingTable& table = side[row];
    return table.largest()[i] == best ? count_equal(table.row(i), table.stride(), best) : 0;
  };
  int ties = 0;
  for (int i = 0; i < n; ++i) ties += ties_in(false, i) + ties_in(true, i);

  int left = draw(0, ties - 1);
  int from = 0;
  for (; from < n; ++from) {
    const int here = ties_in(false, from) + ties_in(true, from);
    if (left < here) break;
    left -= here;
  }
  for (int to = 0; to < n; ++to) {
    for (const bool row : {false, true}) {
      if (side[row].at(from, to) == best && left-- == 0) return {from, to, row};
    }
  }
  return no_addition;
}

}  // namespace zelt::braidwerk::internal
