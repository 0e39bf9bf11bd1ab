#pragma once

#include <vector>

#include "zeltbraidwerk/pauli/internal/rotations.h"
#include "zeltbraidwerk/pauli/search/internal/diagonal_blocks.h"
#include "zeltbraidwerk/pauli/search/internal/network.h"
#include "zeltbraidwerk/pauli/search/internal/network_plans.h"
#include "zeltbraidwerk/pauli/search/internal/network_problem.h"
#include "zeltbraidwerk/pauli/search/internal/rotation_list.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// The rotations of a search, in the ways in which its parts look at them. Not to be moved.
struct NetworkInput {
  NetworkInput(const Rotations& all, bool in_order);
  NetworkInput(const NetworkInput&) = delete;
  NetworkInput& operator=(const NetworkInput&) = delete;

  int qubits() const { return rotations.frame.qubits(); }
  /// So long that a relay of greedy runs does better than most beams.
  bool is_long() const;
  /// So long that a greedy run takes more than a second or two: on a device many strings are looked
  /// at for every gate, for every wire.
  bool is_slow(const Task& task) const;

  const Rotations& rotations;
  RotationList given;   ///< in the order given, without identity strings
  RotationList sorted;  ///< the same by their letters
  DiagonalBlocks blocks;
};

/// What the parts of one search share.
struct NetworkRun {
  const NetworkInput& input;
  const NetworkTask& task;
  NetworkPlans& plans;
  Rng& rng;
  Meter& meter;

  const RotationList& list(const NetworkPlan& plan) const {
    return plan.sorted ? input.sorted : input.given;
  }
  NetworkProblem problem(const RotationList& list, const NetworkSettings& settings) const {
    return {list, task.in_order, settings, task.device, rng, task.target};
  }
};

}  // namespace zelt::braidwerk::internal
