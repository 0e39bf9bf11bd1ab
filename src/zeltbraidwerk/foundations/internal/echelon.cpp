#include "zeltbraidwerk/foundations/internal/echelon.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/row_sums.h"

namespace zelt::braidwerk::internal {
namespace {

int first_one(const std::vector<Word>& bits) {
  const auto word = std::find_if(bits.begin(), bits.end(), [](Word w) { return w != 0; });
  if (word == bits.end()) return -1;
  return static_cast<int>(word - bits.begin()) * word_bits + std::countr_zero(*word);
}

/// Columns are cleared a few at once, by sums of their pivot rows. All rows end up as if columns
/// were cleared one after the other.
class EchelonForm {
 public:
  EchelonForm(BitMatrix& a, BitMatrix& b)
      : a_(a),
        b_(b),
        most_(static_cast<std::size_t>(
            std::clamp(static_cast<int>(std::bit_width(static_cast<unsigned>(a.rows()))) - 4, 1,
                       RowSums::most_rows))) {}

  std::vector<int> run() {
    for (int c = 0; c < a_.cols();) {
      question_point();
      c = take_columns(c);
      add_up();
      for (int r = 0; r < a_.rows(); ++r) {
        if (r < top_ || r >= next()) clear(r);
      }
      pivots_.insert(pivots_.end(), columns_.begin(), columns_.end());
      top_ = next();
      columns_.clear();
    }
    return std::move(pivots_);
  }

 private:
  int next() const { return top_ + static_cast<int>(columns_.size()); }

  /// Finds pivots from column c on, each in the first row that has one. Returns the column after
  /// the last one.
  int take_columns(int c) {
    first_word_ = c / word_bits;  // before it there is nothing in rows from the top on
    for (; c < a_.cols() && columns_.size() < most_; ++c) {
      int r = next();
      while (r < a_.rows() && !has_pivot(r, c)) ++r;
      if (r >= a_.rows()) continue;
      a_.swap_rows(r, next());
      b_.swap_rows(r, next());
      for (int k = top_; k < next(); ++k) {
        if (a_.get(k, c)) add(a_.row(next()) + first_word_, b_.row(next()), k);
      }
      columns_.push_back(c);
    }
    return c;
  }

  bool has_pivot(int r, int c) {
    for (std::size_t k = 0; k < columns_.size(); ++k) {
      const int row = top_ + static_cast<int>(k);
      if (a_.get(r, columns_[k])) add(a_.row(row) + first_word_, b_.row(row), r);
    }
    return a_.get(r, c);
  }

  void add(const Word* from_a, const Word* from_b, int to) {
    add_words(a_.row(to) + first_word_, from_a, words_of_a());
    add_words(b_.row(to), from_b, b_.stride());
  }

  void clear(int r) {
    std::size_t which = 0;
    for (std::size_t k = 0; k < columns_.size(); ++k) {
      which |= static_cast<std::size_t>(a_.get(r, columns_[k])) << k;
    }
    if (which != 0) add(sums_[which], sums_[which] + words_of_a(), r);
  }

  void add_up() {
    sums_.make(static_cast<int>(columns_.size()), words_of_a() + b_.stride(),
               [&](int k, Word* sum) {
                 add_words(sum, a_.row(top_ + k) + first_word_, words_of_a());
                 add_words(sum + words_of_a(), b_.row(top_ + k), b_.stride());
               });
  }
  int words_of_a() const { return a_.stride() - first_word_; }

  BitMatrix& a_;
  BitMatrix& b_;
  std::size_t most_;  // columns at once
  int top_ = 0;       // after all pivot rows of earlier columns
  int first_word_ = 0;
  std::vector<int> columns_;
  std::vector<int> pivots_;
  RowSums sums_;
};

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
  return EchelonForm(a, b).run();
}

}  // namespace zelt::braidwerk::internal
