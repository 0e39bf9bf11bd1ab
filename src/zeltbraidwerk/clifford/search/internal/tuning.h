#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "zeltbraidwerk/clifford/search/internal/cost.h"
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
  /// By sorting so many wires come next as there are digits in the number left, less this one.
  int sorted_digits = 3;
  // Windows have up to this number of wires. The small ones need no large table, and little effort
  // has no use for it.
  int first_window = 3;  ///< in round 0
  int window = 4;
  // Beams. Widths that are tried, the widest that its steps pay for.
  int sparse_part = 2;  ///< operators with fewer letters than one in this many are sparse
  std::array<int, 6> two_sided_widths{1, 3, 10, 30, 100, 300};
  std::uint64_t two_sided_steps = 512;  ///< n^4 / 512 for each of the width
  std::array<int, 8> one_sided_widths{1, 3, 10, 30, 100, 300, 1000, 3000};
  std::uint64_t one_sided_steps = 100;  ///< n^2 min(n, 64) / 100 for each of the width
  std::uint64_t one_sided_wires = 64;
  int patience = 30;        ///< levels without a better score, and one more for each wire
  double tie_noise = 1e-3;  ///< in the smallest change of the score
  // Beams of eliminations on a device, and what is made of them: random operators on tokyo, grids.
  Schedule device_rounds{.first_steps = 1 << 13, .most_growths = 37};
  std::array<int, 6> device_widths{1, 3, 10, 30, 100, 300};
  std::uint64_t device_steps = 150;  ///< n^3 min(n, 24) / 150 + 1 for each of the width
  std::uint64_t device_wires = 24;
  int all_on_device = 24;   ///< up to here all wires may go next
  int tried_on_device = 8;  ///< above, see LeavingWires
  double device_noise = 0.01;
  double weight_left = 0.07;  ///< of a gate that is left to be done, next to the gates so far
  int device_starts = 4;      ///< each round, walked from for its steps
  std::uint64_t walk_from_winner = 2;  ///< in walks of a start
  std::uint64_t walk_from_best = 4;
  int path_operations = 10'000;  ///< for a Hamiltonian path
  // Parts of the steps of a round: one in this many.
  std::uint64_t new_part = 2;       ///< from a new beginning
  std::uint64_t closed_part = 4;    ///< from a circuit that was closed
  std::uint64_t best_part = 2;      ///< from the best circuit in place
  std::uint64_t layered_part = 4;   ///< for a layered form
  int block_width = 16;             ///< of the beams for the blocks of its graphs
  std::uint64_t layered_wires = 4;  ///< a step of it takes as long as a gate on one wire in these
  // Beams of whole layers. Rows clifford 8 to 32 depth.
  int whole_layer_wires = 40;      ///< above, layered forms have as few layers
  int quick_layer_wires = 24;      ///< a greedy run takes a hundredth of a second
  std::uint64_t whole_layers = 4;  ///< so many times the steps of a round
  int layer_variants = 4;          ///< tried on each side of a state
  float layer_noise = 0.3F;        ///< of what a gate changes
  std::uint64_t most_layer_width = 100;

  // The fewest gates on five and six wires (FewWireSearch). On five there are no operators known
  // that the tries are not enough for; on six they prove that there are not fewer than 12.
  std::uint64_t most_tries_on_five = 4'000'000;
  std::uint64_t most_tries_on_six = 20'000'000;
  int first_for_fewest = 4;         ///< round on six wires: its table takes 4 s to build
  std::uint64_t tries_of_step = 2;  ///< as long as the walks take, or a little longer
  std::uint64_t tries_of_timed_step = 100;
  double seconds_on_six = 0.25;    ///< that are left are enough with the table at hand
  double seconds_for_table = 4.5;  ///< to build it
  // Closing.
  float exchange_price = 1.5F;  ///< gates that an exchange of outputs counts
  int closing_steps = 256;      ///< for each wire
  Cooling cooling_closing{0.1F, 0.003F};
  // Walks.
  Cooling cooling{0.3F, 0.003F};
  Cooling cooling_in_place{0.1F, 0.003F};
  /// Hot, as few circuits of a window are equally short.
  Cooling cooling_on_device{0.5F, 0.02F};
  Cooling cooling_of_sorted{1.0F, 0.1F};  ///< hotter, random operators on a line of 16
  Schedule rounds{.first_steps = 1 << 14, .most_growths = 36};
};
inline constexpr CliffordTuning clifford_tuning;

inline int leaving_on_device(int wires) {
  return wires <= clifford_tuning.all_on_device ? wires : clifford_tuning.tried_on_device;
}

inline int window_wires(int round) {
  return round == 0 ? clifford_tuning.first_window : clifford_tuning.window;
}

/// Of beams from one side: f(w) = -q^w goes through about 13 orders of magnitude over all weights;
/// a double has 16.
inline double row_ratio(int wires) {
  return 1 - std::min(0.2, 13.0 / std::max(wires, 1));
}

/// Of beams from both sides: the cost that leads to the shortest circuits on this number of qubits.
inline OperatorCost operator_cost(int wires) {
  struct Choice {
    int most_wires;
    int twice_power;
    double offset;
    double other_side;
  };
  constexpr std::array<Choice, 6> choices{{{10, -5, 0, 1},
                                           {18, -10, 0, 1},
                                           {28, -10, 0, 0.05},
                                           {48, -14, 0.125, 0.05},
                                           {80, -20, 0.25, 0.05},
                                           {most_wires, -24, 0.3, 0.05}}};
  const Choice& choice = *std::ranges::lower_bound(choices, wires, {}, &Choice::most_wires);
  OperatorCost cost;
  cost.twice_power = choice.twice_power;
  cost.scale = wires;
  cost.offset = choice.offset * wires;
  cost.other_side = choice.other_side;
  if (wires > 128) cost.most_wires = 16;
  return cost;
}

/// Of beams of whole layers.
inline OperatorCost layer_cost(int wires) {
  OperatorCost cost;
  cost.twice_power = -16;
  cost.scale = wires;
  return cost;
}

struct StateTuning {
  int quick_wires = 64;  ///< up to here the greedy run is made whatever the effort: milliseconds
  int most_written_late = 1500;  ///< qubits; a circuit of more takes 0.1 s to write, with its signs
  double summed_digits = 3.5;    ///< one edge in the digits of n, less this, is where sums pay
  int first_sets = 100;          ///< information sets that the first beams begin from
  int sets_at_once = 10;
  int first_width = 4;  ///< of the first beam after the greedy run
  // Generators as they are: so many tries, or as many as there are squares of the qubits in the
  // area.
  int least_peelings = 2;
  int most_peelings = 16;
  int peeled_area = 1'000'000;
  int most_peeled = 500;  ///< qubits; of more, light generators as they are given alone
  int patience = 100;     ///< levels of a beam without a better score
  int width = 8;          ///< of the beam of round 0; twice as wide each round
  int most_doublings = 10;
  int renewals = 4;  ///< new beginnings in round 0; twice as many each round: rows state_*
  int most_renewal_doublings = 20;
  int renewed_sets = 16;  ///< information sets for each of these
  int looked_at = 10;     ///< gates that a beam tries on a state
  /// Information sets after each gate: the more qubits are left, the more there is to find, until
  /// the price is too high.
  int sets = 6;
  int more_sets = 60;   ///< for numbers of qubits above the first and up to the second of these
  int few_qubits = 60;  ///< above, sets are neighbours of each other
  int many_qubits = 128;
  int exchanged = 6;  ///< qubits between two sets; 2 to 16 are alike
  int exchange_tries = 8;
  // By all words. Row logical 0 Golay.
  std::uint64_t words_per_step = 1 << 15;   ///< for each generator and qubit
  std::uint64_t word_walks = 8;             ///< steps of the beam, in walks of the round
  std::uint64_t most_word_width = 1 << 14;  ///< 40 MB
  // By decoding. Rows graph state 150 and 200 of bench/search.
  int least_decoded = 150;        ///< qubits
  int most_decoded = 1024;        ///< what is left is brought to the form of a graph in 50 ms
  double decoded_density = 0.27;  ///< letters of a generator of dense states, in qubits
  int block = 30;                 ///< qubits; on more than 40 decoding is far from the fewest
  int last_block = 115;           ///< about: beams make short circuits of it
  double search_part = 0.2;       ///< what of the steps of the others is for their circuits
  double decoding_per_step = 24;  ///< steps of the decoder for one of a beam on a block
  double block_steps_per_area = 1.0 / 2500;  ///< for one on a square of the qubits
  std::uint64_t first_decoding_part = 16;    ///< the first circuit takes one in this many of the
                                             ///< square of the qubits
  std::uint64_t decoding_walks = 2;          ///< steps of the others, in walks of the round
  // By layers.
  int colored_wires = 256;   ///< edges of graphs in the order of a colouring up to here: 20 ms
  int largest_part = 80;     ///< larger states are split: at 100 qubits 32 layers instead of 37
  int layer_variants = 4;    ///< layers that a beam tries on a state
  double layer_noise = 0.2;  ///< in their gains; 0.1 to 1 are alike
  double tie_noise = 0.5;    ///< in letters of generators
  std::uint64_t layer_walks = 2;  ///< steps of their beams, in walks of the round
  int most_layer_width = 256;
  int layer_renewals = 16;       ///< new beginnings in round 0; twice as many each round
  std::uint64_t gauge_part = 8;  ///< one in this many steps of a round, for another gauge of a code
  Cooling cooling{0.3F, 0.003F};
  std::uint64_t anneal_walks = 8;  ///< steps for few layers, in walks of the round
  Schedule walk{.first_steps = 1 << 11, .most_growths = 29};
};
inline constexpr StateTuning state_tuning;

/// Of states on a device. Chosen by codes and random graph states of 8 to 23 qubits on lines and
/// grids, in bench/peers/states.py.
struct PlacedStateTuning {
  int beam_wires = 64;       ///< beams on up to this number, of one word
  int quick_wires = 20;      ///< up to here a greedy run takes some 10 ms, and is always made
  int first_sets = 100;      ///< information sets that a search begins with
  int begun_sets = 25;       ///< the same for each placement and new beginning
  int sets = 4;              ///< information sets for each state of a beam
  int spare = 1;             ///< light products kept for each generator
  int placed_spare = 4;      ///< the same while qubits are placed
  int tried = 3;             ///< of the generators with a letter on a wire, the lightest
  double weight_left = 0.4;  ///< of a gate that a generator takes, next to the gates so far
  double noise = 0.01;
  int first_placements = 4;  ///< greedy runs, each from another placement
  int width = 4;             ///< of the beams of round 0; twice as wide each round
  int most_doublings = 8;
  int placements = 4;  ///< new ones each round
  int renewals = 4;    ///< new beginnings in round 0; twice as many each round
  int most_renewal_doublings = 20;
  double least_gain = 1e-12;  ///< by which an exchange of two qubits makes generators lighter
  std::uint64_t exchanges_per_step = 8;  ///< n^2 / 8 steps for looking at all pairs
  std::uint64_t states_per_step = 64;    ///< n^3 / 64 steps for a state of a beam
  std::uint64_t anneal_walks = 4;        ///< steps for few layers, in walks of the round
  /// Operators that a window with zeros is compared with. More are no better at as many steps.
  int gauges = 2;
  std::uint64_t new_part = 4;  ///< one in this many steps of a round, from each placement
  Cooling cooling{0.3F, 0.03F};
  Schedule rounds{.first_steps = 1 << 11, .most_growths = 29};
};
inline constexpr PlacedStateTuning placed_state_tuning;

}  // namespace zelt::braidwerk::internal
