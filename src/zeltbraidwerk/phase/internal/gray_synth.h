#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/phase/internal/phase_circuit.h"

namespace zelt::braidwerk::internal {

/// The rule of find_best_split: of equal scores the first row wins, hence the ascending order.
class BestSplit {
 public:
  explicit BestSplit(int columns) : columns_(columns) {}

  void consider(int row, int ones) {
    const int zeros = columns_ - ones;
    const int score = zeros > ones ? zeros : ones + 1;
    if (score <= score_) return;
    score_ = score;
    row_ = row;
  }
  int row() const { return row_; }  ///< -1 when none was considered

 private:
  int columns_;
  int score_ = -1;
  int row_ = -1;
};

/// See gray_synth. `parities` has no zero column.
ZELTBRAIDWERK_KERNEL_EXPORT std::vector<PhaseStep> gray_synth(BitMatrix parities);

}  // namespace zelt::braidwerk::internal
