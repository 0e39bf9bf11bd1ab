#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"

namespace zelt::braidwerk::internal {

/// What some rows of `cols` bits span.
class RowSpace {
 public:
  explicit RowSpace(int cols) : words_(words_for(cols)) {}

  bool contains(const Word* row) const;
  /// False when the row was in there.
  bool add(const Word* row);
  int rank() const { return static_cast<int>(basis_.size()); }

 private:
  struct Member {
    int pivot;  ///< a one here, which all later members have as 0
    std::vector<Word> bits;
  };

  std::vector<Word> reduced(const Word* row) const;

  int words_;
  std::vector<Member> basis_;
};

int rank(BitMatrix m);

/// Reduced row echelon form of a, the same row operations on b; returns the pivot columns.
std::vector<int> reduce_to_echelon(BitMatrix& a, BitMatrix& b);

}  // namespace zelt::braidwerk::internal
