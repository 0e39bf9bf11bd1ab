#pragma once

#include <cstdint>

#include "zeltbraidwerk/search/internal/schedule.h"
#include "zeltbraidwerk/search/internal/walk.h"

/// \file
/// All numbers of the searches for Clifford operators and stabilizer states that were tuned. Each
/// names the rows of bench/search, or of bench/quality where these are the only ones, that it was
/// chosen by; numbers without a name of a row were not measured singly.

namespace zelt::braidwerk::internal {

struct CliffordTuning {
  int table_wires = 4;       ///< a table has the shortest circuits
  int two_sided_wires = 18;  ///< beams from both sides, rows clifford 8 to 32
  int quick_two_sided = 40;  ///< a greedy run from both sides takes a twentieth of a second
  int quick_wires = 256;     ///< a greedy run from one side takes a second
  Cooling cooling{0.3F, 0.003F};
  Cooling cooling_in_place{0.1F, 0.003F};
  /// Hot, as few circuits of a window are equally short.
  Cooling cooling_on_device{1.0F, 0.1F};
  Schedule rounds{.first_steps = 1 << 14, .most_growths = 36};
};
inline constexpr CliffordTuning clifford_tuning;

struct StateTuning {
  int quick_wires = 64;  ///< up to here the greedy run is made whatever the effort: milliseconds
  int first_sets = 100;  ///< information sets that the first beams begin from
  int first_width = 4;   ///< of the first beam after the greedy run
  int patience = 100;    ///< levels of a beam without a better score
  int width = 8;         ///< of the beam of round 0; twice as wide each round
  int most_doublings = 10;
  int renewals = 4;       ///< new beginnings in round 0; twice as many each round: rows state_*
  int renewed_sets = 16;  ///< information sets for each of these
  std::uint64_t anneal_walks = 8;  ///< steps for few layers, in walks of the round
  Schedule walk{.first_steps = 1 << 11, .most_growths = 29};
};
inline constexpr StateTuning state_tuning;

}  // namespace zelt::braidwerk::internal
