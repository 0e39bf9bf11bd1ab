#pragma once

#include <cstdint>
#include <limits>
#include <utility>

#include "zeltbraidwerk/search/objective.h"

namespace zelt::braidwerk::internal {

using synthesis::Objective;
using synthesis::Outputs;

class BitGraph;
struct GateList;

inline constexpr int any_reach = std::numeric_limits<int>::max();

/// What a search is asked for, beside the operation itself.
struct Task {
  Objective objective = Objective::count;
  Outputs outputs = Outputs::in_place;
  int reach = 0;                     ///< for Outputs::within_reach: in edges of the device
  const BitGraph* device = nullptr;  ///< connected: gates are on its edges; null for all pairs
  std::uint64_t seed = 0;
  std::uint64_t stream = 0;  ///< of the seed, one per run
  /// A circuit that is known: the answer is never larger, and is searched for from there too.
  const GateList* start = nullptr;

  bool by_depth() const { return objective == Objective::depth; }
  bool in_place() const { return outputs == Outputs::in_place; }
  /// Whether what the gates leave is undone.
  bool closes() const { return outputs != Outputs::left_open; }
  /// The edges that an output may be away from its place.
  int most_reach() const {
    return outputs == Outputs::within_reach ? reach : in_place() ? 0 : any_reach;
  }
};

/// The gates on two wires of a circuit, and their layers.
struct CircuitSize {
  int count = 0;
  int depth = 0;

  /// By the objective first. Smaller is better.
  std::pair<int, int> key(Objective objective) const {
    return objective == Objective::depth ? std::pair(depth, count) : std::pair(count, depth);
  }
  bool operator==(const CircuitSize&) const = default;
};

}  // namespace zelt::braidwerk::internal
