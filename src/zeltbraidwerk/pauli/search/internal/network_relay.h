#pragma once

#include <optional>
#include <vector>

#include "zeltbraidwerk/pauli/search/internal/network_plans.h"
#include "zeltbraidwerk/pauli/search/internal/network_problem.h"

namespace zelt::braidwerk::internal {

struct RelayOptions {
  bool in_order = false;
  const CliffordTarget* target = nullptr;
  const BitGraph* graph = nullptr;
  int runs = 1;     ///< from every place
  int width = 1;    ///< places that are kept side by side
  int stretch = 1;  ///< rotations that a run serves
  /// Gates of a network that is known. A run is then judged by what it leaves as well, in gates by
  /// the costs that the first plan sees in it and in the whole list. 0: by its own gates alone.
  int known = 0;
  bool narrow = false;  ///< looks at fewer rotations, which takes less time
  float alike = 0;      ///< how often a run's plan is one like that of the run followed before
};

/// Gates after `prefix` that serve all rotations, one after the other the gates of greedy runs:
/// some with plans of their own set out from the same place, and of the one that took the fewest
/// gates those that serve the first half of its rotations are kept. With a width above 1 several
/// are kept, whichever places they set out from, of the fewest gates from the beginning. Nothing
/// where the effort was spent before all were served. A step is a gate of a run.
std::optional<std::vector<Gate>> relay_gates(const RotationList& list, const RelayOptions& options,
                                             const std::vector<Gate>& prefix,
                                             const NetworkPlans& plans, Rng& rng, Meter& meter);

}  // namespace zelt::braidwerk::internal
