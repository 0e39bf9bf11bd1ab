#include "zeltbraidwerk/foundations/internal/echelon.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {
namespace {

int first_one(const std::vector<Word>& bits) {
  const auto word = std::find_if(bits.begin(), bits.end(), [](Word w) { return w != 0; });
  if (word == bits.end()) return -1;
  return static_cast<int>(word - bits.begin()) * word_bits + std::countr_zero(*word);
}

}  // namespace

std::vector<Word> RowSpace::reduced(const Word* row) const {
  std::vector<Word> bits(row, row + words_);
  for (const Member& member : basis_) {
    const Word word = bits[static_cast<std::size_t>(member.pivot / word_bits)];
    if (!((word >> (member.pivot % word_bits)) & 1)) continue;
    for (std::size_t w = 0; w < bits.size(); ++w) bits[w] ^= member.bits[w];
  }
  return bits;
}

bool RowSpace::contains(const Word* row) const {
  return first_one(reduced(row)) < 0;
}

bool RowSpace::add(const Word* row) {
  std::vector<Word> bits = reduced(row);
  const int pivot = first_one(bits);
  if (pivot >= 0) basis_.push_back({pivot, std::move(bits)});
  return pivot >= 0;
}

int rank(BitMatrix m) {
  int found = 0;
  for (int r = 0; r < m.rows(); ++r) {
    question_point();
    const Word* row = m.row(r);
    const Word* word = std::find_if(row, row + m.stride(), [](Word w) { return w != 0; });
    if (word == row + m.stride()) continue;
    const int pivot = static_cast<int>(word - row) * word_bits + std::countr_zero(*word);
    for (int below = r + 1; below < m.rows(); ++below) {
      if (m.get(below, pivot)) m.add_row(r, below, pivot);
    }
    ++found;
  }
  return found;
}

std::vector<int> reduce_to_echelon(BitMatrix& a, BitMatrix& b) {
  std::vector<int> pivots;
  for (int c = 0; c < a.cols(); ++c) {
    question_point();
    const int top = static_cast<int>(pivots.size());
    int r = top;
    while (r < a.rows() && !a.get(r, c)) ++r;
    if (r >= a.rows()) continue;
    a.swap_rows(r, top);
    b.swap_rows(r, top);
    for (int k = 0; k < a.rows(); ++k) {
      if (k != top && a.get(k, c)) b.add_row(top, k);
    }
    a.clear_column(top, c);
    pivots.push_back(c);
  }
  return pivots;
}

}  // namespace zelt::braidwerk::internal
