#include "zeltbraidwerk/linear/internal/saving_table.h"

#include <algorithm>
#include <bit>
#include <numeric>

#include "zeltbraidwerk/foundations/internal/clones.h"

namespace zelt::braidwerk::internal {
namespace {

ZELTBRAIDWERK_CLONES
Cell largest_of(const Cell* row, std::size_t stride) {
  return largest_cell(row, stride);
}

ZELTBRAIDWERK_CLONES
void find_row_maxima(const Cell* cells, int n, std::size_t stride, Cell* largest) {
  for (int i = 0; i < n; ++i) {
    largest[i] = largest_cell(cells + static_cast<std::size_t>(i) * stride, stride);
  }
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

/// The savings of the pairs with line k, by how much nearer it has come to the other line; on one
/// side of the diagonal also by how much it has grown.
ZELTBRAIDWERK_CLONES
void follow_line(const Word* lines, int words, int n, int k, const Word* before, bool backward,
                 Cell* cells, Cell* largest, std::size_t stride) {
  const Word* after = lines + k * words;
  int grown = 0;
  for (int w = 0; w < words; ++w) grown += std::popcount(after[w]) - std::popcount(before[w]);
  const int grown_in_row = backward ? grown : 0;
  const int grown_in_column = grown - grown_in_row;
  Cell* own = cells + static_cast<std::size_t>(k) * stride;
  for (int a = 0; a < n; ++a) {
    if (a == k) continue;
    const Word* line = lines + a * words;
    const int nearer = distance(line, before, words) - distance(line, after, words);
    own[a] = static_cast<Cell>(own[a] + nearer + grown_in_row);
    Cell* row = cells + static_cast<std::size_t>(a) * stride;
    const Cell old = row[k];
    row[k] = static_cast<Cell>(old + nearer + grown_in_column);
    if (row[k] >= largest[a]) {
      largest[a] = row[k];
    } else if (old == largest[a]) {
      largest[a] = largest_cell(row, stride);
    }
  }
  largest[k] = largest_cell(own, stride);
}

ZELTBRAIDWERK_CLONES
void follow_place(const Word* before, const Word* after, int n, bool backward, Cell* cells,
                  Cell* largest, std::size_t stride, Cell* changes) {
  fill_changes(before, after, n, stride, backward, changes);
  for (int k = 0; k < n; ++k) {
    const std::size_t kind = change_kind(before, after, k);
    if (kind == 0 && !backward) continue;
    const Cell* change = changes + kind * stride;
    Cell* row = cells + static_cast<std::size_t>(k) * stride;
    const Cell diagonal = row[k];
    CellVector most = CellVector{} + no_saving;
    for (std::size_t c = 0; c < stride; c += cell_lanes) {
      CellVector& savings = vector_at(row + c);
      savings += vector_at(change + c);
      raise(most, savings);
    }
    row[k] = diagonal;
    largest[k] = largest_lane(most);
  }
}

/// Adds to counts[i] how often row i holds the value, which is the largest of all rows.
ZELTBRAIDWERK_CLONES
void count_largest(const Cell* cells, const Cell* largest, int n, std::size_t stride, Cell value,
                   int* counts) {
  for (int i = 0; i < n; ++i) {
    if (largest[i] != value) continue;
    CellVector equal = {};
    for (std::size_t k = 0; k < stride; k += cell_lanes) {
      equal -= vector_at(cells + static_cast<std::size_t>(i) * stride + k) == value;
    }
    counts[i] += sum_of_lanes(equal);
  }
}

}  // namespace

SavingTable::SavingTable(int n)
    : n_(std::max(n, 0)),
      stride_((static_cast<std::size_t>(n_) + cell_lanes - 1) / cell_lanes * cell_lanes),
      cells_(static_cast<std::size_t>(n_) * stride_, no_saving),
      largest_(stride_, no_saving) {
  for (int i = 0; i < n; ++i) {
    std::fill_n(row(i), n, Cell{0});
    set(i, i, -2 * n);
  }
}

void SavingTable::find_largest() {
  find_row_maxima(cells_.data(), n_, stride_, largest_.data());
}

void SavingTable::add_savings(const BitMatrix& lines, const int* weights, Direction direction) {
  if (n_ == 0) return;
  add_pair_savings(lines.row(0), lines.stride(), weights, n_, direction == Direction::Backward,
                   cells_.data(), stride_);
  find_largest();
}

void SavingTable::line_changed(const BitMatrix& lines, int k, const Word* before,
                               Direction direction) {
  follow_line(lines.row(0), lines.stride(), n_, k, before, direction == Direction::Backward,
              cells_.data(), largest_.data(), stride_);
}

void SavingTable::place_changed(const Word* before, const Word* after, Direction direction) {
  changes_.resize(4 * stride_);
  follow_place(before, after, n_, direction == Direction::Backward, cells_.data(), largest_.data(),
               stride_, changes_.data());
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
    best = std::max(best, largest_of(table.largest(), table.stride()));
  }
  if (only_gains && best <= 0) return no_addition;

  std::vector<int> counts(static_cast<std::size_t>(n));
  for (const SavingTable& table : side) {
    count_largest(table.row(0), table.largest(), n, table.stride(), best, counts.data());
  }
  int left = draw(0, std::accumulate(counts.begin(), counts.end(), 0) - 1);
  int from = 0;
  while (left >= counts.data()[from]) left -= counts.data()[from++];
  for (int to = 0; to < n; ++to) {
    for (const bool row : {false, true}) {
      if (side[row].at(from, to) == best && left-- == 0) return {from, to, row};
    }
  }
  return no_addition;
}

}  // namespace zelt::braidwerk::internal
