#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/phase/internal/phase_circuit.h"

namespace zelt::braidwerk::internal {

/// The rule of find_best_split: of equal scores the first row wins, hence the ascending order.
struct BestSplit {
  int columns;
  int score = -1;
  int row = -1;  ///< -1 when none was considered

  void consider(int candidate, int ones) {
    const int zeros = columns - ones;
    const int reached = zeros > ones ? zeros : ones + 1;
    if (reached <= score) return;
    score = reached;
    row = candidate;
  }
};

/// See gray_synth. `parities` has no zero column.
std::vector<PhaseStep> gray_synth(BitMatrix parities);

}  // namespace zelt::braidwerk::internal
