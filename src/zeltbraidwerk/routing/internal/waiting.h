#pragma once

#include <utility>
#include <vector>

namespace zelt::braidwerk::internal {

/// Which rotations are yet to be emitted. Rows are numbered through all blocks; a lookahead takes
/// rows and gives them back.
class Waiting {
 public:
  /// Block b is the rows first[b] to first[b + 1] - 1.
  explicit Waiting(std::vector<int> first)
      : first_(std::move(first)), taken_(static_cast<std::size_t>(first_.back())) {
    for (std::size_t b = 0; b + 1 < first_.size(); ++b) left_.push_back(first_[b + 1] - first_[b]);
  }

  int blocks() const { return static_cast<int>(left_.size()); }
  bool is_empty(int block) const {
    return block < 0 || block >= blocks() || left_[static_cast<std::size_t>(block)] == 0;
  }
  int first_row(int block) const { return first_[static_cast<std::size_t>(block)]; }

  std::vector<int> rows(int block) const {
    std::vector<int> rows;
    for (int r = first_row(block); r < first_row(block + 1); ++r) {
      if (!taken_[static_cast<std::size_t>(r)]) rows.push_back(r);
    }
    return rows;
  }

  void take(int block, int row) { mark(block, row, true); }
  void give_back(int block, int row) { mark(block, row, false); }

  /// Where the rows end that this block's next rotation and the `depth` after it can come from.
  int end_of_window(int block, int depth) const {
    int b = block;
    for (int count = depth; b < blocks() && (b == block || count >= 0); ++b) {
      count -= left_[static_cast<std::size_t>(b)];
    }
    return first_row(b);
  }

 private:
  void mark(int block, int row, bool taken) {
    taken_[static_cast<std::size_t>(row)] = taken;
    left_[static_cast<std::size_t>(block)] += taken ? -1 : 1;
  }

  std::vector<int> first_;
  std::vector<char> taken_;
  std::vector<int> left_;
};

}  // namespace zelt::braidwerk::internal
