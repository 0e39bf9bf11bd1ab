#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "zeltbraidwerk/pauli/search/internal/network_settings.h"
#include "zeltbraidwerk/search/internal/walk.h"

/// \file
/// All numbers of the search for Pauli networks that were tuned. Figures are CNOTs of the rows
/// UCCSD of bench/search. What has no figure was not measured singly.

namespace zelt::braidwerk::internal {

struct NetworkTuning {
  /// Greedy runs that are made whatever the effort.
  int first_runs = 4;
  int first_runs_in_order = 3;
  int first_runs_if_slow = 1;
  /// Seconds of a greedy run on a device, for each rotation and the square of its qubits; it is
  /// slow where it takes more than one.
  double seconds_on_device = 1e-6;
  int most_for_equal = 1000;  ///< no first run on longer lists weighs all rotations the same
  /// By count, ladders are no start where they take more than this times the gates of the best one:
  /// strings are heavy there.
  std::size_t heavy_ladders = 2;

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

  // Relays. H2O in order, 500 thousand steps: 1434, without relays 1496.
  int relays_from_start = 2;
  int relays_from_gates = 3;
  int relay_runs = 8;  ///< from every place in round 0; twice as many each round
  int most_relay_doublings = 3;
  /// With a budget of time and a long list: places side by side, the share of the time of all
  /// relays from the start, that of one from gates for what is left, and what is left at least for
  /// one, by how long a narrow one takes. See DEVELOPERS.md.
  int most_relay_width = 16;
  double relay_time = 0.45;
  double relay_time_from_gates = 0.25;
  double relay_margin = 1.5;
  /// A run is given up where it would not be kept at this share of the best one's gates for each
  /// rotation to come.
  double relay_pace = 0.5;
  int least_stretch = 30;  ///< rotations that a run of a relay serves
  int stretches = 50;
  /// How often a run's plan is like the one followed before, in any order. H2O, 300 thousand steps:
  /// 919, without 1031; LiH, 200 thousand: 616, without 634. In order it makes no difference.
  float alike = 0.8F;

  std::uint64_t walk_steps_of_event = 8;  ///< in round 0; twice as many each round
  int most_walk_doublings = 6;
  /// With a budget of time and a long list, how long a walk takes at least for what was spent since
  /// the one before. UCCSD, two seeds, 0.6 and without: NH3 after 30 s 2319 and 2394, LiH after 10
  /// s 583 and 601.
  double walk_time = 0.6;
  int walk_gates = 8;            ///< the most in a window
  int walk_patience = 30;        ///< pieces of sequences that are looked at for a window
  int walk_more_patience = 400;  ///< the same for one window in walk_rare
  int walk_rare = 16;
  Cooling cooling{};

  /// Gates (by depth layers) of the network of blocks, against those of the first runs, up to which
  /// blocks get all of the effort, and half of it.
  double all_to_blocks = 1.1;
  double half_to_blocks = 1.25;

  /// Blocks are worth a search where they have one rotation for this many qubits on average.
  std::size_t qubits_of_rotation = 2;

  int small_group_patience = 400;  ///< tries to shorten a group on three qubits
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
  /// In the place of NetworkTuning's. Walks alone, 250 thousand windows: adder_8, gf2^5, gf2^7 and
  /// hwb6 together 660 with 80, 675 with 30.
  int walk_patience = 60;
};
inline constexpr NetworkTargetTuning network_target_tuning;

/// The state that a search scores.
struct NetworkWindowTuning {
  int rows_in_order = 320;  ///< of the window
  int most_rows = 1280;
  /// Later rotations are not in the window. In any order this and the first plans took LiH from 713
  /// to 686, H2O from 1166 to 1119, NH3 from 2825 to 2690, N2 from 5579 to 5586, in less time.
  double least_emphasis = 0.01;
  /// For relays with a budget of time, but on devices. One with runs given up, and 0.01: NH3, three
  /// places, 2328 (2.9 s) and 2402 (3.5 s); H2O, six, 925 and 951; LiH, six, 576 and 587 (eight
  /// seeds each).
  double least_emphasis_if_narrow = 0.06;
  int longest_chain = 32;
  /// Costs that fall by less than one in this do not count, or a search could go in circles.
  std::int64_t least_gain = 10'000;
  std::uint32_t least_pull = 8;  ///< strings that gain and lose less are not looked at
  /// What each letter costs beside the curve of the settings, so that very heavy strings become
  /// lighter as well.
  double letter_cost = 1e-5;
  /// A rotation outside the window costs what a string of this many letters for each qubit does, or
  /// of the list's mean weight, if that is more.
  double usual_letters = 0.75;
  int most_children = 6;  ///< gates that a beam tries on a state
};
inline constexpr NetworkWindowTuning network_window_tuning;

struct Range {
  double low = 0;
  double high = 0;
};
/// What the costs of a plan are drawn from.
struct DrawnCosts {
  Range shape;
  Range bonus;
};

/// The plans of runs: see NetworkSettings.
struct PlanTuning {
  /// Of the first runs, in any order: see least_emphasis.
  std::array<NetworkPlan, 8> first{{
      {{.shape = 0.42, .bonus = 0.4, .emphasis = Emphasis::by_place, .rate = 50}},
      {{.shape = 0.44, .bonus = 0.8, .emphasis = Emphasis::by_place, .rate = 55}},
      {{.shape = 0.45}},
      {{.shape = 0.48, .bonus = 0.2, .emphasis = Emphasis::by_place, .rate = 35}},
      {{.shape = 0.42, .bonus = 0.6, .emphasis = Emphasis::by_place, .rate = 55}},
      {{.geometric = false, .shape = 2, .emphasis = Emphasis::by_place, .rate = 80}},
      {{.geometric = false, .shape = 3, .bonus = 0.5}},
      {{.shape = 0.44, .bonus = 0.8, .emphasis = Emphasis::by_place, .rate = 55}, true},
  }};
  /// Strings are up to three times as far from a single letter, so costs are flatter. On grid 4x4:
  /// NH3 4985, H2O 1846; with steep costs alone 6191 and 2308.
  std::array<NetworkPlan, 8> first_on_device{{
      {{.shape = 0.44, .bonus = 0.8, .emphasis = Emphasis::by_place, .rate = 55}},
      {{.geometric = false, .shape = 2.5, .bonus = 1, .emphasis = Emphasis::by_place, .rate = 500}},
      {{.geometric = false, .shape = 2, .bonus = 0.5, .emphasis = Emphasis::by_place, .rate = 200}},
      {{.geometric = false, .shape = 2, .bonus = 1, .emphasis = Emphasis::by_place, .rate = 200}},
      {{.geometric = false, .shape = 2.5, .bonus = 1}},
      {{.geometric = false, .shape = 2, .bonus = 1, .emphasis = Emphasis::by_place, .rate = 80}},
      {{.shape = 0.45}},
      {{.shape = 0.44, .bonus = 0.8, .emphasis = Emphasis::by_place, .rate = 55}, true},
  }};
  std::array<NetworkPlan, 4> first_in_order{{
      {{.shape = 0.7, .bonus = 1, .emphasis = Emphasis::by_chain, .rate = 0.5}},
      {{.shape = 0.7, .bonus = 0.6, .emphasis = Emphasis::by_predecessors, .rate = 1}},
      {{.shape = 0.7, .bonus = 1, .emphasis = Emphasis::by_chain, .rate = 0.4}},
      {{.geometric = false, .shape = 0.7, .emphasis = Emphasis::by_predecessors, .rate = 1.2}},
  }};

  std::size_t remembered = 5;  ///< plans that did best
  float anew = 0.4F;           ///< how often a plan is drawn anew, and not one of these varied

  // Plans that are drawn anew, some with geometric costs and the others with powers.
  float geometric = 0.6F;
  DrawnCosts geometric_in_order{.shape = {0.55, 0.85}, .bonus = {0, 1.2}};
  DrawnCosts power_in_order{.shape = {0.35, 1.1}, .bonus = {0, 0.6}};
  float by_chain = 0.4F;  ///< how often, in order; otherwise by predecessors
  Range rate_by_chain{0.27, 0.48};
  Range rate_by_predecessors{0.8, 2};
  // On a device where powers do best.
  DrawnCosts power_on_device{.shape = {1.6, 3}, .bonus = {0, 1}};
  float by_place_on_device = 0.75F;  ///< how often; otherwise all alike
  double rate_on_device = 60;        ///< times ten to the power of the next
  Range decades_on_device{0, 1};
  // In any order, where emphasis by place does best.
  DrawnCosts geometric_by_place{.shape = {0.35, 0.6}, .bonus = {0, 1}};
  DrawnCosts power_by_place{.shape = {1, 2.2}, .bonus = {0, 1}};
  Range rate_by_place{25, 90};
  // In any order, where equal emphasis does best.
  DrawnCosts geometric_equal{.shape = {0.35, 0.6}, .bonus = {0, 0.5}};
  DrawnCosts power_equal{.shape = {2.2, 4}, .bonus = {0, 0.5}};

  // Plans that are varied.
  Range shape_change{-0.07, 0.07};  ///< of geometric costs
  Range geometric_shapes{0.25, 0.92};
  Range power_shape_factor{0.8, 1.25};
  Range bonus_change{-0.25, 0.25};
  Range rate_factor{0.85, 1.18};
  float no_jitter = 0.6F;  ///< how often
  Range jitter{0, 0.25};
  int tail_qubits = 12;  ///< up to here the tail may count
  float no_tail = 0.6F;  ///< how often it does not all the same
  Range tail{0, 0.012};
};
inline constexpr PlanTuning plan_tuning;

/// How many strings a Reach remembers; a table that is full is emptied and grows.
struct ReachTuning {
  std::size_t least_slots = std::size_t{1} << 10;
  std::size_t most_slots = std::size_t{1} << 18;
  std::size_t growth = 4;
};
inline constexpr ReachTuning reach_tuning;

/// How many searches in vain a walk remembers, as powers of two. 2^18 are slower to look up.
struct VainTuning {
  int least_bits = 10;
  int growth_bits = 2;
  int most_bits = 16;
};
inline constexpr VainTuning vain_tuning;

/// Walks that exchange wires: see NetworkWalk.
struct ExchangeTuning {
  float share = 0.3F;      ///< of the windows
  int weight_of_swap = 1;  ///< of one that is left to be undone, in gates
};
inline constexpr ExchangeTuning exchange_tuning;

/// Networks of which the fewest gates are looked for.
struct SmallNetworkTuning {
  std::size_t most_work = 1'000'000;  ///< strings after gates: some hundredths of a second
};
inline constexpr SmallNetworkTuning small_network_tuning;

}  // namespace zelt::braidwerk::internal
