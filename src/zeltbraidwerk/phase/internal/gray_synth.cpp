#include "zeltbraidwerk/phase/internal/gray_synth.h"

#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/phase/internal/columns.h"

namespace zelt::braidwerk::internal {
namespace {

ZELTBRAIDWERK_CLONES
int best_split(const BitMatrix& parities, const Word* rows, int row_words, ColumnsView columns) {
  BestSplit best{count_columns(columns)};
  for (int w = 0; w < row_words; ++w) {
    for (Word rest = rows[w]; rest != 0; rest &= rest - 1) {
      const int row = w * word_bits + std::countr_zero(rest);
      best.consider(row, count_ones(columns, parities.row(row)));
    }
  }
  return best.row;
}

/// Depth-first over pieces of work, the last one first. Each piece has a target row, -1 while none
/// is chosen, the rows that it may still be split on, and its columns. Rows and columns of all
/// waiting pieces lie one behind the other on two stacks.
class GraySynth {
 public:
  explicit GraySynth(BitMatrix parities)
      : parities_(std::move(parities)), row_words_(words_for(parities_.rows())) {}

  std::vector<PhaseStep> run() {
    columns_ = all_columns(parities_.cols());
    if (columns_.empty()) return {};
    rows_.resize(static_cast<std::size_t>(row_words_));
    refill();
    pieces_.push_back({-1, static_cast<int>(columns_.size())});
    while (!pieces_.empty()) {
      if (pieces_.back().target >= 0 && is_single(columns())) {
        finish();
      } else {
        split();
      }
    }
    return std::move(steps_);
  }

 private:
  struct Piece {
    int target;
    int words;  // of columns
  };

  Word* rows() { return rows_.data() + rows_.size() - row_words_; }
  ColumnsView columns() const {
    const auto words = static_cast<std::size_t>(pieces_.back().words);
    return ColumnsView(columns_).last(words);
  }

  void refill() {
    for (int w = 0; w < row_words_; ++w) rows()[w] = low_bits(parities_.rows() - w * word_bits);
  }

  void pop() {
    columns_.resize(columns_.size() - static_cast<std::size_t>(pieces_.back().words));
    rows_.resize(rows_.size() - static_cast<std::size_t>(row_words_));
    pieces_.pop_back();
  }

  /// Gathers the column on the target, where it gets its phase.
  void finish() {
    const int target = pieces_.back().target;
    const int column = columns()[0].word * word_bits + std::countr_zero(columns()[0].mask);
    for (int r = 0; r < parities_.rows(); ++r) {
      if (r == target || !parities_.get(r, column)) continue;
      steps_.push_back(PhaseStep::cnot(r, target));
      parities_.add_row(target, r);
    }
    steps_.push_back(PhaseStep::phase(target, column));
    pop();
  }

  /// Replaces the piece by its ones and its zeros on the best row, the zeros to be worked on first.
  void split() {
    int row = best_split(parities_, rows(), row_words_, columns());
    if (row < 0) {
      refill();
      row = best_split(parities_, rows(), row_words_, columns());
    }
    const int target = pieces_.back().target;
    zeros_.clear();
    ones_.clear();
    split_columns(columns(), parities_.row(row), zeros_, ones_);
    std::vector<Word>& left = rows_left_;
    left.assign(rows(), rows() + row_words_);
    left[static_cast<std::size_t>(row / word_bits)] &= ~(Word{1} << (row % word_bits));
    pop();
    push(target < 0 ? row : target, ones_);
    push(target, zeros_);
  }

  void push(int target, const Columns& columns) {
    if (columns.empty()) return;
    pieces_.push_back({target, static_cast<int>(columns.size())});
    columns_.insert(columns_.end(), columns.begin(), columns.end());
    rows_.insert(rows_.end(), rows_left_.begin(), rows_left_.end());
  }

  BitMatrix parities_;
  int row_words_;
  std::vector<Piece> pieces_;
  Columns columns_;
  std::vector<Word> rows_;
  std::vector<PhaseStep> steps_;
  Columns zeros_;
  Columns ones_;
  std::vector<Word> rows_left_;
};

}  // namespace

std::vector<PhaseStep> gray_synth(BitMatrix parities) {
  return GraySynth(std::move(parities)).run();
}

}  // namespace zelt::braidwerk::internal
