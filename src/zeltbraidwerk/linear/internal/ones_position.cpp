#include "zeltbraidwerk/linear/internal/ones_position.h"

#include <algorithm>
#include <utility>

#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/linear/internal/cell_rows.h"

namespace zelt::braidwerk::internal {
namespace {

/// The additions of one kind, rows or columns, seen from their lines: `own` holds their savings,
/// `other` those of the other kind.
struct View {
  const Word* lines;
  int words;
  const int* weights;
  const Cell* own;
  const Cell* other;
  const Cell* other_largest;
  int n;
  std::size_t stride;

  const Word* line(int k) const { return lines + k * words; }
};

/// For each line the largest saving among the pairs without it.
ZELTBRAIDWERK_CLONES
void find_largest_without(const View& v, Cell* column_largest, Cell* largest_without) {
  for (int j = 0; j < v.n; ++j) {
    std::fill_n(column_largest, v.stride, no_saving);
    for (int a = 0; a < v.n; ++a) {
      if (a == j) continue;
      const Cell* row = v.own + static_cast<std::size_t>(a) * v.stride;
      for (std::size_t k = 0; k < v.stride; ++k) {
        column_largest[k] = std::max(column_largest[k], row[k]);
      }
    }
    column_largest[j] = no_saving;
    largest_without[j] = largest_cell(column_largest, v.stride);
  }
}

/// The largest saving that pairs of the line `sum`, in place of line i or line j, have with the
/// other lines: either may be the source.
ZELTBRAIDWERK_CLONES
int largest_with(const View& v, const Word* sum, int weight, int i, int j) {
  int largest = no_saving;
  for (int a = 0; a < v.n; ++a) {
    if (a == i || a == j) continue;
    const int saving = std::max(weight, v.weights[a]) - distance(v.line(a), sum, v.words);
    largest = std::max(largest, saving);
  }
  return largest;
}

/// The largest saving of the other kind once line j has become `sum`.
ZELTBRAIDWERK_CLONES
int largest_across(const View& v, const Word* before, const Word* sum, Cell* bits, Cell* changes,
                   Cell* column_largest) {
  fill_changes(before, sum, v.n, v.stride, false, bits, changes);
  std::fill_n(column_largest, v.stride, no_saving);
  Cell untouched = no_saving;
  for (int a = 0; a < v.n; ++a) {
    const std::size_t kind = change_kind(before, sum, a);
    if (kind == 0) {
      untouched = std::max(untouched, v.other_largest[a]);
      continue;
    }
    const Cell* row = v.other + static_cast<std::size_t>(a) * v.stride;
    const Cell* change = changes + kind * v.stride;
    for (std::size_t k = 0; k < v.stride; ++k) {
      const auto saving = static_cast<Cell>(row[k] + change[k]);
      column_largest[k] = std::max(column_largest[k], saving);
    }
  }
  return std::max(untouched, largest_cell(column_largest, v.stride));
}

}  // namespace

OnesPosition::OnesPosition(const BitMatrix& a) : lines_(a), savings_(a.rows()) {
  savings_.add(lines_, SavingTable::Direction::Forward);
}

OnesPosition::OnesPosition(const BitMatrix& a, Savings savings)
    : lines_(a), savings_(std::move(savings)) {}

void OnesPosition::apply(LineAddition addition) {
  savings_.apply(lines_, addition, SavingTable::Direction::Forward);
}

void OnesPosition::score_children(std::vector<Candidate>& children) const {
  const int n = lines_.size();
  if (n < 2) return;
  const std::size_t stride = savings_.side[0].stride();
  std::vector<Cell> room(8 * stride);
  Cell* bits = room.data();
  Cell* changes = bits + 2 * stride;
  Cell* column_largest = changes + 4 * stride;
  Cell* largest_without = column_largest + stride;
  std::vector<Word> sum(static_cast<std::size_t>(lines_.side(true).stride()));

  for (const bool row : {false, true}) {
    const BitMatrix& lines = lines_.side(row);
    const SavingTable& other = savings_.side[!row];
    const View v{lines.row(0),
                 lines.stride(),
                 lines_.weights(row),
                 savings_.side[row].row(0),
                 other.row(0),
                 other.largest(),
                 n,
                 stride};
    find_largest_without(v, column_largest, largest_without);
    for (int i = 0; i < n; ++i) {
      for (int j = i + 1; j < n; ++j) {
        for (int w = 0; w < v.words; ++w) sum.data()[w] = v.line(i)[w] ^ v.line(j)[w];
        const int weight = internal::weight(sum.data(), v.words);
        const int beside = largest_with(v, sum.data(), weight, i, j);
        const auto score = [&](int from, int to) {
          const int back = std::max(weight, v.weights[from]) - v.weights[to];
          const int best =
              std::max({static_cast<int>(largest_without[to]), beside, back,
                        largest_across(v, v.line(to), sum.data(), bits, changes, column_largest)});
          children.emplace_back(lines_.ones() - v.weights[to] + weight - best,
                                LineAddition{from, to, row});
        };
        score(i, j);
        score(j, i);
      }
    }
  }
}

}  // namespace zelt::braidwerk::internal
