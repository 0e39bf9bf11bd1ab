#include "zeltbraidwerk/linear/internal/lines.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace zelt::braidwerk::internal {

Lines::Lines(BitMatrix rows) {
  side_[0] = rows.transposed();
  side_[1] = std::move(rows);
  for (const bool row : {false, true}) {
    for (int k = 0; k < size(); ++k) weights_[row].push_back(side_[row].row_weight(k));
  }
  ones_ = side_[1].weight();
}

void Lines::add(LineAddition addition) {
  BitMatrix& own = side_[addition.row];
  BitMatrix& crossing = side_[!addition.row];
  int* crossing_weights = weights_[!addition.row].data();
  int change = 0;
  const Word* source = own.row(addition.from);
  for (int w = 0; w < own.stride(); ++w) {
    for (Word rest = source[w]; rest != 0; rest &= rest - 1) {
      const int k = w * word_bits + std::countr_zero(rest);
      crossing.flip(k, addition.to);
      const int step = crossing.get(k, addition.to) ? 1 : -1;
      crossing_weights[k] += step;
      change += step;
    }
  }
  own.add_row(addition.from, addition.to);
  weights_[addition.row].data()[addition.to] += change;
  ones_ += change;
}

bool Lines::reduced() const {
  return std::ranges::all_of(weights_[1], [](int weight) { return weight < 2; });
}

bool Lines::completes(LineAddition addition) const {
  const auto [from, to, row] = addition;
  const BitMatrix& rows = side_[1];
  for (int r = 0; r < size(); ++r) {
    int weight = weights(true)[r];
    if (row && r == to) {
      weight = weight_of_sum(rows.row(from), rows.row(to), rows.stride());
    } else if (!row && rows.get(r, from)) {
      weight += rows.get(r, to) ? -1 : 1;
    }
    if (weight > 1) return false;
  }
  return true;
}

LineAddition Lines::completion() const {
  // A row addition mends one row, a column addition takes at most one from each.
  const auto heavier_than = [this](int weight) {
    return std::ranges::count_if(weights_[1], [weight](int w) { return w > weight; });
  };
  if (heavier_than(1) > 1 && heavier_than(2) > 0) return no_addition;
  for (int from = 0; from < size(); ++from) {
    for (int to = 0; to < size(); ++to) {
      if (from == to) continue;
      for (const bool row : {true, false}) {
        if (completes({from, to, row})) return {from, to, row};
      }
    }
  }
  return no_addition;
}

}  // namespace zelt::braidwerk::internal
