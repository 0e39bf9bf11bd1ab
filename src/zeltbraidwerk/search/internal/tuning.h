#pragma once

#include "zeltbraidwerk/search/internal/walk.h"

/// \file
/// The numbers of annealing that all families share. They were not measured singly.

namespace zelt::braidwerk::internal {

struct AnnealTuning {
  Cooling temperatures{0.4F, 0.05F};
  float uphill = 0.3F;   ///< probability of a longer block, before the whole circuit is judged
  int long_list = 1000;  ///< gates from which on a step takes longer than microseconds
  // The energy of a circuit.
  float layer = 2;
  float gate = 0.02F;
};
inline constexpr AnnealTuning anneal_tuning;

}  // namespace zelt::braidwerk::internal
