#pragma once

#include <cstddef>
#include <cstdint>

#include "zeltbraidwerk/search/internal/walk.h"

/// \file
/// All numbers of the search for Pauli networks that were tuned, but for the plans, which are
/// tables in network_plans.cpp. They were not measured singly.

namespace zelt::braidwerk::internal {

struct NetworkTuning {
  /// Greedy runs that are made whatever the effort.
  int first_runs = 4;
  int first_runs_in_order = 3;
  int first_runs_if_slow = 1;
  int most_for_equal = 1000;  ///< no first run on longer lists weighs all rotations the same

  int long_list = 300;  ///< rotations
  int beams_from_start = 3;
  int beams_from_gates = 6;
  int beams_from_start_if_long = 1;
  int beams_from_gates_if_long = 2;
  int beam_width = 4;  ///< in round 0; twice as wide each round
  int most_beam_doublings = 5;
  int beam_patience = 30;  ///< levels without a better score, and one per qubit
  double beam_noise = 16;
  std::uint64_t tail_share = 8;  ///< a tail gets an eighth of the steps of what it closes
  std::uint64_t most_tail_steps = std::uint64_t{1} << 14;
  int swap_ways = 4;  ///< ways to put qubits in place, of which the best is taken

  int relays_from_start = 2;
  int relays_from_gates = 3;
  int relay_runs = 8;  ///< from every place in round 0; twice as many each round
  int most_relay_doublings = 3;
  int least_stretch = 30;  ///< rotations that a run of a relay serves
  int stretches = 50;
  float alike = 0.8F;  ///< how often a run's plan is like the one followed before, in any order

  std::uint64_t walk_steps_of_event = 8;  ///< in round 0; twice as many each round
  int most_walk_doublings = 6;
  int walk_gates = 8;            ///< the most in a window
  int walk_patience = 30;        ///< pieces of sequences that are looked at for a window
  int walk_more_patience = 400;  ///< the same for one window in walk_rare
  int walk_rare = 16;
  Cooling cooling{};

  /// Gates (by depth layers) of the network of blocks, against those of the first runs, up to which
  /// blocks get all of the effort, and half of it.
  double all_to_blocks = 1.1;
  double half_to_blocks = 1.25;
};
inline constexpr NetworkTuning network_tuning;

/// Networks that close to a given operator, and walks from given ones.
struct NetworkTargetTuning {
  /// How often the images of the operator are weighed, and the most that they weigh.
  float tail_chance = 0.7F;
  double most_tail = 0.2;
  /// The odds to go uphill with which a walk begins, drawn anew for each.
  float least_uphill = 0.05F;
  float most_uphill = 0.5F;
};
inline constexpr NetworkTargetTuning network_target_tuning;

/// The state that a search scores.
struct NetworkWindowTuning {
  int rows_in_order = 320;  ///< of the window
  int most_rows = 1280;
  double least_emphasis = 0.01;  ///< later rotations are not in the window
  int longest_chain = 32;
  /// Costs that fall by less than one in this do not count, or a search could go in circles.
  std::int64_t least_gain = 10'000;
  std::uint32_t least_pull = 8;  ///< strings that gain and lose less are not looked at
};
inline constexpr NetworkWindowTuning network_window_tuning;

}  // namespace zelt::braidwerk::internal
