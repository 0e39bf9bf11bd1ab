#include "zeltbraidwerk/linear/internal/ones_position.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "zeltbraidwerk/foundations/internal/clones.h"

namespace zelt::braidwerk::internal {
namespace {

/// Which lines have a largest saving of at least a given value, as bits.
class Ranking {
 public:
  Ranking(const SavingTable& table, int words) : words_(words) {
    const auto [least, most] = std::minmax_element(table.largest(), table.largest() + table.size());
    top_ = *most;
    sets_.resize(static_cast<std::size_t>((top_ - *least + 1) * words));
    for (int k = 0; k < table.size(); ++k) {
      set(table.largest()[k])[k / word_bits] |= Word{1} << (k % word_bits);
    }
    for (std::size_t w = static_cast<std::size_t>(words); w < sets_.size(); ++w) {
      sets_[w] |= sets_[w - static_cast<std::size_t>(words)];
    }
  }

  int top() const { return top_; }
  /// The lines with at least `value`, which is not above top().
  const Word* at_least(int value) const {
    const int last = static_cast<int>(sets_.size()) / words_ - 1;
    return sets_.data() + std::min(top_ - value, last) * words_;
  }

 private:
  Word* set(int value) { return sets_.data() + (top_ - value) * words_; }

  int words_;
  int top_;
  std::vector<Word> sets_;
};

/// The additions of one kind, rows or columns, seen from their lines: `own` holds their savings,
/// `other` those of the other kind.
struct View {
  const Word* lines;
  int words;
  const int* weights;
  const Cell* own;
  const Cell* other;
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
      for (std::size_t k = 0; k < v.stride; k += cell_lanes) {
        raise(vector_at(column_largest + k), vector_at(row + k));
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

/// The largest saving of the other kind once a line has gone from `before` to `sum`, or `floor`
/// where that is larger. Only rows that can exceed it are looked at.
ZELTBRAIDWERK_CLONES
int largest_across(const View& v, const Ranking& ranking, const Word* before, const Word* sum,
                   int floor, Cell* changes) {
  int best = floor;
  for (int value = ranking.top(); value > best; --value) {
    const Word* rows = ranking.at_least(value);
    for (int w = 0; w < v.words; ++w) {
      if ((rows[w] & ~(before[w] | sum[w])) != 0) best = value;
    }
  }
  if (best - 1 > ranking.top()) return best;
  const Word* near = ranking.at_least(best - 1);
  bool filled = false;
  CellVector largest = CellVector{} + static_cast<Cell>(best);
  for (int w = 0; w < v.words; ++w) {
    Word rest = near[w] & before[w] & sum[w];
    if (best <= ranking.top()) rest |= ranking.at_least(best)[w] & (before[w] ^ sum[w]);
    for (; rest != 0; rest &= rest - 1) {
      if (!std::exchange(filled, true)) fill_changes(before, sum, v.n, v.stride, false, changes);
      const int a = w * word_bits + std::countr_zero(rest);
      const Cell* row = v.other + static_cast<std::size_t>(a) * v.stride;
      const Cell* change = changes + change_kind(before, sum, a) * v.stride;
      for (std::size_t k = 0; k < v.stride; k += cell_lanes) {
        raise(largest, vector_at(row + k) + vector_at(change + k));
      }
    }
  }
  return filled ? largest_lane(largest) : best;
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
  CellRows room(6 * stride);
  Cell* changes = room.data();
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
                 n,
                 stride};
    const Ranking ranking(other, v.words);
    find_largest_without(v, column_largest, largest_without);
    for (int i = 0; i < n; ++i) {
      for (int j = i + 1; j < n; ++j) {
        for (int w = 0; w < v.words; ++w) sum.data()[w] = v.line(i)[w] ^ v.line(j)[w];
        const int weight = internal::weight(sum.data(), v.words);
        const int beside = largest_with(v, sum.data(), weight, i, j);
        const auto score = [&](int from, int to) {
          const int back = std::max(weight, v.weights[from]) - v.weights[to];
          const int floor = std::max({static_cast<int>(largest_without[to]), beside, back});
          const int best = largest_across(v, ranking, v.line(to), sum.data(), floor, changes);
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
