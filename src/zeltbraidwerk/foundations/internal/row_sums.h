#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"

namespace zelt::braidwerk::internal {

/// target becomes target XOR source, over `count` words that do not overlap.
void add_words(Word* target, const Word* source, int count);

/// All sums of a few rows, by the bits of a number. Many rows to which some of the few are added
/// get one sum each (the method of the four Russians).
class RowSums {
 public:
  static constexpr int most_rows = 8;

  /// Of `count` rows of `size` words, which add(row, sum) adds.
  template <class F>
  void make(int count, int size, F&& add) {
    size_ = static_cast<std::size_t>(size);
    sums_.assign(size_ << count, 0);
    for (std::size_t which = 1; which < std::size_t{1} << count; ++which) {
      Word* sum = sums_.data() + which * size_;
      std::copy_n((*this)[which & (which - 1)], size_, sum);
      add(std::countr_zero(which), sum);
    }
  }

  const Word* operator[](std::size_t which) const { return sums_.data() + which * size_; }

 private:
  std::size_t size_ = 0;
  std::vector<Word> sums_;
};

}  // namespace zelt::braidwerk::internal
