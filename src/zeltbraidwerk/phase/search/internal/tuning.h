#pragma once

#include <array>

#include "zeltbraidwerk/linear/search/internal/reduction.h"
#include "zeltbraidwerk/phase/search/internal/growth.h"
#include "zeltbraidwerk/search/internal/walk.h"

/// \file
/// All numbers of the search for parity networks that were tuned. n8k64, n16k160 and n20k200 are
/// sets of random parities on 8, 16 and 20 wires, as in the rows 8_64, 16_160 and 20_200 of
/// bench/quality; figures are mean gates. What has no figure was not measured singly.

namespace zelt::braidwerk::internal {

struct GrowthTuning {
  /// The decay of costs starts between these at top_decay - decay_weight / mean weight where there
  /// are `usual_terms` parities for each wire, higher where there are fewer. One beam of width 64,
  /// the constant decay that was best -> a rising one: n8k64 78.4 -> 78.2, n16k160 389.1 -> 380.8
  /// to 382.4, n20k200 635.9 -> 619.0; width 2, n8k64 rises of 0, 0.05 and 0.1 85.0, 86.4 and 83.5;
  /// n20k200 rises of 0.04, 0.06 and 0.07 627, 620 and 628.6, starts of 0.53 and 0.57 with 0.06
  /// 627.5 and 630.
  double top_decay = 0.85;
  double decay_weight = 3;
  double decay_rise = 0.05;
  double quick_rise_on_few = 0.1;  ///< of the first network; more than 0.05 is no gain later
  double usual_terms = 10;
  double most_halvings = 1.75;  ///< that the start is higher for
  double least_decay = 0.2;
  double most_decay = 0.9;
  /// What the rows of the map count, and by which exponent: 0 on few wires, -0.5 on medium numbers,
  /// -1 on many. n8k64: 0.05 with 0 76.9, nothing 77.8. n16k160: 0.1 with -0.5 380.0, 0.1 with -1
  /// 382.3, nothing 388.0. n20k200: 0.1 with -1 627.0, 0.2 with -0.7 637.0; 0.1 with -2, 624.3, is
  /// not used.
  int few_wires = 12;
  int medium_wires = 18;
  double share_on_few = 0.05;
  double share = 0.1;
  double exponent_on_few = 0;
  double exponent_on_medium = -0.5;
  double exponent = -1;
  /// Other decays that are tried beside the first one.
  double flatter = 0.1;
  double steeper = 0.15;
  /// The lengths by these count so many times, as one narrow beam tells little. n20k200, 5 s: 642
  /// and 667 from the wrong costs, 590 to 600 else.
  double handicap = 1.04;
  std::array<GrowthCost, 4> costs_on_device{
      {{0.65, 0, 0.1, -1}, {0.65, 0, 0, -1}, {0.75, 0, 0.1, -1}, {0.5, 0, 0.1, -1}}};
  double tie_noise = 1e-3;
  int finishers = 10;  ///< n16k160: 100 386.5, 5 387
  int overtime = 5;    ///< levels
};
inline constexpr GrowthTuning growth_tuning;

struct ParityTuning {
  double quick_microseconds = 2e5;  ///< a first beam may take a fifth of a second
  int quick_wires_on_device = 20;
  int quick_width = 2;
  int quick_closing_wires = 32;  ///< up to here the first closing is a beam
  int quick_closing_width = 10;
  int closing_part = 3;  ///< a closing beam is this part of the width of the network's
  int most_closing_width = 100;
  double closing_noise = 1e-4;
  /// Estimates: a beam of width 1 takes 1 + 8e-6 p^2 n^3 microseconds for p parities on n wires,
  /// and a state of it as long as 1 + p n^2 / 20000 steps of a walk.
  double least_microseconds = 1;
  double microseconds_of_beam = 8e-6;
  int beam_on_device = 4;  ///< times as long
  double state_of_walk_step = 20000;
  double first_beam_microseconds = 5e3;
  double most_first_width = 2;
  double least_walk_steps = 5e3;
  int width_growth = 4;     ///< of a beam, against the one before
  double last_beam = 0.65;  ///< share of the time that is left
  double most_beam_bytes = 1e9;
  int least_beam_width = 10;  ///< that is allowed, whatever the memory
  int most_beam_width = 100'000;
  /// Steps of a walk for those of the beam before: on few wires a walk makes up for a narrow beam,
  /// on many it mends what a wide one has missed.
  int few_wires = 12;
  int walks_on_few = 16;
  int wide = 200;
  int walks_after_wide = 3;
  int walks_in_place = 4;  ///< a walk with the outputs in place takes a quarter of the steps
  int widest_on_three_wires = 30;  ///< there is nothing more to find
  Cooling cooling{0.3F, 0.003F};   ///< n16k160: this and 0.1 to 0.003 365.0, 0.03 to 0.001 364.5
  Cooling cooling_on_device{1.0F, 0.1F};
};
inline constexpr ParityTuning parity_tuning;

/// Of a circuit that undoes a network's map. Found on random maps.
inline ReductionCost closing_cost(int n) {
  if (n <= 20) return {.exponent = n <= 12 ? 0.0 : -0.5, .with_inverse = true};
  return {.exponent = n < 40 ? -0.5 : -n / 25.0, .focus = n < 200 ? 0 : 8};
}

}  // namespace zelt::braidwerk::internal
