#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/linear/search/internal/reduction.h"
#include "zeltbraidwerk/search/internal/schedule.h"
#include "zeltbraidwerk/search/internal/walk.h"

/// \file
/// All numbers of the searches for CNOT circuits that were tuned. Each names the rows of
/// bench/search that it was chosen by; numbers without a name of a row were not measured singly.

namespace zelt::braidwerk::internal {

/// For few CNOTs, all pairs of wires.
struct CnotTuning {
  /// Rows matrix 8 to 512, ciphers.
  Schedule rounds{.first_steps = 1 << 15, .growth = 1.5};

  // Regimes, by the number of wires. Rows matrix 8 to 512 free.
  int small_wires = 20;      ///< a beam sees the inverse as well
  int two_sided_wires = 32;  ///< beams from both sides; above, by columns where the map is dense
  int beam_wires = 40;       ///< long walks; of sparse maps, beams from both sides as well
  int middle_wires = 110;    ///< above, walks are cool
  int greedy_wires = 512;    ///< above, no greedy run, and no look at the inverse
  int sparse_part = 3;       ///< maps of fewer ones than one in this many are sparse
  int least_long_walk = 11;  ///< to beam_wires: few long walks in place of many, rows matrix 16, 32

  // Greedy runs that are made whatever the effort. Rows matrix 16 to 64 greedy.
  int quick_wires = 64;           ///< from both sides: 20 ms
  int least_quick_columns = 28;   ///< by columns from here on, a narrow beam up to beam_wires
  int quick_wires_columns = 320;  ///< by columns: a third of a second
  int inverse_wires = 36;         ///< the cost sees the inverse up to here
  int whole_wires = 160;          ///< above, additions go to few lines alone
  int whole_wires_sparse = 256;   ///< the same of sparse maps, rows of ciphers
  int focus = 8;                  ///< these lines

  // Walks. Rows matrix 8 to 512 free; those of ciphers for sparse maps.
  Cooling cooling_small{0.15F, 0.05F};    ///< long walks up to small_wires
  Cooling cooling_long{0.3F, 0.003F};     ///< long walks above
  Cooling cooling{0.15F, 0.01F};          ///< others
  Cooling cooling_large{0.05F, 0.005F};   ///< above middle_wires, rows matrix 128 to 512
  int long_walk_period = 3;               ///< rounds
  std::uint64_t long_walk = 10;           ///< rounds that it is long, outputs anywhere
  std::uint64_t long_walk_in_place = 13;  ///< rows matrix 16, 32 exact
  /// Of the steps of a round in place, circuits with outputs anywhere take one in this many.
  std::uint64_t anywhere_part = 2;
  std::uint64_t anywhere_part_long_walk = 4;
  int hopeless_part = 8;  ///< a start longer than the best by this part is not walked from

  // Beams.
  int narrow = 10;
  int wide = 300;  ///< rows matrix 16, 32 free; 1000 gave nothing more on 32 wires
  double tie_noise = 1e-5;
  int patience = 30;              ///< levels without a better score, and one more for each wire
  double columns_per_step = 400;  ///< a beam by columns takes n^3 / 400 steps for each of its width
  std::array<int, 7> column_widths{1, 10, 30, 100, 300, 1000, 3000};
  int sparse_beam_wires = 48;  ///< wider beams of sparse maps, rows of ciphers
  std::array<int, 3> sparse_widths{10, 100, 300};
  std::size_t sparse_rounds = 8;  ///< of each of these widths
};
inline constexpr CnotTuning cnot_tuning;

/// Of greedy runs. Rows matrix 16 to 64 greedy.
inline ReductionCost greedy_cost(int n) {
  const double exponent = n <= 12                        ? 1
                          : n <= cnot_tuning.small_wires ? -0.5
                          : n <= 28                      ? -1
                                                         : -n / 28.0;
  return {.exponent = exponent,
          .with_inverse = n <= cnot_tuning.inverse_wires,
          .focus = n > cnot_tuning.whole_wires ? cnot_tuning.focus : 0};
}

/// Of greedy runs on sparse maps: few lines change, so that several take no longer than one on a
/// dense map does, and none is best for all. Rows of ciphers.
inline std::vector<ReductionCost> greedy_costs_if_sparse(int n) {
  if (n <= cnot_tuning.whole_wires) return {{-0.5, false}, {0, true}};
  if (n <= cnot_tuning.whole_wires_sparse) return {{-0.5, false}};
  return {{-0.5, false, cnot_tuning.focus}};
}

/// Of beams from both sides. Rows matrix 8 to 32 free.
inline ReductionCost beam_cost(int n) {
  const bool small = n <= cnot_tuning.small_wires;
  return {.exponent = small ? 0 : -0.5, .with_inverse = small};
}

/// Of beams by columns: f(w) = -q^w goes through about 9 orders of magnitude over all weights; a
/// double has 16. Rows matrix 64, 128 free.
inline double column_ratio(int n) {
  return 1 - std::min(0.18, 12.0 / std::max(n, 1));
}

/// Of beams on sparse maps, in turn. Rows of ciphers.
inline constexpr std::array<ReductionCost, 6> beam_costs_if_sparse{
    {{1, true}, {0, true}, {-0.5, false}, {-2, false}, {-1, true}, {0, false}}};

/// For light sums, by decoding.
struct DecodingTuning {
  int exchanges = 8;      ///< of vectors in the basis, between two looks
  int pairs_per_key = 4;  ///< 8 to 16, as a power of 2
  double pairs_per_step = 400;
  double lookups_per_step = 40;
};
inline constexpr DecodingTuning decoding_tuning;

/// For starts by decoding, of either kind below.
struct DecodedStartTuning {
  int period = 3;             ///< rounds
  double growth = 8;          ///< from one to the next
  std::uint64_t rounds = 12;  ///< that it is long
  double part_of_time = 0.9;  ///< that the last one takes, of what is left
};
inline constexpr DecodedStartTuning decoded_start_tuning;

/// For circuits by elimination of blocks of wires. Rows matrix 64 to 256 free.
struct EliminationTuning {
  int least_wires = 57;
  int most_wires = 256;              ///< a look takes 20 ms
  int most_vectors = 1500;           ///< 25 MB for pairs
  int most_of_block = 1000;          ///< of them, before others pass on
  int orders = 30;                   ///< of what a wire receives, in which it passes on
  std::uint64_t first_steps = 3500;  ///< of the first one, for each wire, at least
  std::uint64_t first_steps_of_pair = 22;
  // Wires of a block: on more of them decoding is too far from the fewest. In fewer steps than so
  // many for each pair of wires small blocks come further.
  int block = 50;
  int small_block = 36;
  std::uint64_t few_steps = 100;
  /// What of its steps the circuits of blocks get; the others decode, which is soon done in small
  /// blocks.
  double search_part = 0.3;
  double search_part_of_small = 0.75;
};
inline constexpr EliminationTuning elimination_tuning;

/// For circuits made wire by wire. Rows matrix 48, 56 free.
struct ExtensionTuning {
  int core = 20;        ///< wires to begin with
  int most_wires = 56;  ///< above, elimination by blocks is better
  // Shorter ones are no better than beams by columns.
  std::uint64_t least_steps = 1'000'000;  ///< of a round
  double core_part = 0.1;                 ///< of its steps
  double decoding_part = 0.35;
  double walks_part = 0.55;
  Cooling cooling{0.05F, 0.003F};
  // What goes out and how it comes back.
  float noise = 1.5F;       ///< of the weights of lines to be exchanged
  int divisions = 8;        ///< of a circuit, for each wire
  float least_part = 0.3F;  ///< before the division
  float parts = 0.4F;       ///< a random part of this is added
  float delay = 0.3F;       ///< the latest wires are so many gates late, as a part of all
};
inline constexpr ExtensionTuning extension_tuning;

/// For few layers of CNOTs.
struct ShallowTuning {
  Schedule rounds{.first_steps = 10000, .most_growths = 30};
  int block_wires = 24;  ///< block recursion from here on: on fewer wires greedy layers are fewer
  int large_wires = 48;  ///< from here on the layers of the best are kept, and walks are cooler
  int huge_wires = 96;   ///< from here on walks take a part of the steps
  std::uint64_t huge_part = 4;
  int quick_wires = 128;         ///< up to here the first layers are made whatever the time: 30 ms
  int first_window = 4;          ///< wires of windows in round 0, which needs no large table
  int closings = 4;              ///< random ways to close a circuit, next to swaps
  std::uint64_t layer_part = 5;  ///< of the steps of a round: new layers take one
  std::uint64_t best_part = 2;   ///< annealing of the best
  std::uint64_t cheapest_part = 8;  ///< annealing of the cheapest for each price of a gate
  Cooling heat{0.4F, 0.05F};        ///< of new layers, rows matrix 8 to 32 depth
  /// Of large circuits, which would not come back once molten, rows matrix 64, 128 depth; and of
  /// the best circuits.
  Cooling low_heat{0.2F, 0.05F};
  // What a circuit costs. Row matrix 32 depth.
  float layer = 2;
  float gate = 0.02F;
  std::array<float, 3> gate_prices{0.1F, 0.5F, 2.0F};  ///< for circuits of fewer gates
  float bound_gate = 0.02F;  ///< of a gate without room between the layers, most
  float bound_gates = 2.5F;  ///< of all such gates, most
};
inline constexpr ShallowTuning shallow_tuning;

/// For block recursion whose steps are searched. Rows matrix 32 to 256 depth.
struct BlockTuning {
  int least_wires = 28;           ///< on fewer, annealing alone finds as much
  int most_wires = 256;           ///< above, not measured
  std::uint64_t part = 4;         ///< of the steps of a round, and one of the first
  std::uint64_t quick_part = 10;  ///< of the steps of round 0, for something at once
  int leaf_wires = 16;            ///< up to here, parts are searched as maps of their own
  std::uint64_t least_leaf_steps = 1000;
  std::uint64_t most_leaf_steps = 30'000;
  double share_of_blocks = 0.2;          ///< of the steps of a part, for what is off its diagonal
  double share_of_half = 0.4;            ///< for each half
  std::uint64_t steps_of_try = 200'000;  ///< of a round: the whole is tried once more for each
  std::uint64_t most_tries = 100;
  int exchanges_of_step = 64;  ///< they take as long as a state of a beam
  int most_choices = 60;       ///< of halves, of which the best are taken
  int most_lines = 64;         ///< of a block that is cleared at once
  int variants = 8;            ///< layers to try on a state; 4 are worse
  double offset = 3;           ///< added to weights before their roots are taken
  double noise =
      0.3;  ///< of all variants but the first, in units of the gain; 0.1 to 0.5 are alike
};
inline constexpr BlockTuning block_tuning;

/// Of a beam: more choices of halves gain as much as wider beams on small blocks.
inline int most_block_width(int n) {
  return std::clamp(n / 2, 16, 64);
}

/// Of exchanges between halves.
inline Cooling halves_heat(int n) {
  const float first = 2.0F + static_cast<float>(n) / 20.0F;
  return {first, first / 4};
}

/// For runs of beams over layers. Rows matrix 8 to 256 depth.
struct LayerTuning {
  int middle_wires = 24;
  int large_wires = 48;
  int huge_wires = 96;
  int variants = 3;  ///< layers of each side that a run with noise tries on a state
  float least_noise = 0.1F;
  float more_noise = 0.2F;  ///< a random part of this is added
};
inline constexpr LayerTuning layer_tuning;

/// The exponent of the cost: the light lines are to count the more the larger the matrix is.
inline double layer_exponent(int n) {
  if (n < layer_tuning.middle_wires) return 0.75 - n / 24.0;
  if (n < layer_tuning.large_wires) return -n / 24.0;
  return -4 * std::pow(n / 64.0, 0.75);
}
/// How far later runs may be from it.
inline double layer_exponent_spread(int n, double exponent) {
  return n < layer_tuning.middle_wires ? 0.5 : -0.5 * exponent;
}
/// Of later runs, drawn. Wide beams pay on small matrices; on large ones as many greedy runs do
/// better.
inline std::array<int, 3> layer_widths(int n) {
  if (n < layer_tuning.large_wires) return {8, 32, 128};
  return {1, 1, n < layer_tuning.huge_wires ? 16 : 4};
}

/// For CNOTs on a device.
struct DeviceTuning {
  Schedule rounds{.first_steps = 12000};
  int greedy_wires = 64;  ///< a greedy run of the beam takes some tenths of a second
  /// Vertices that may go next: all up to that number of wires, and a few above, see LeavingWires;
  /// rows matrix on Tokyo and on grid 8x8.
  int all_vertices = 16;
  int few_vertices = 8;
  int path_operations = 10'000;  ///< for a Hamiltonian path
  // Clearings of a line that are looked at further: all up to all_vertices wires, half of them up
  // to some_wires, a quarter above; rows matrix on grid 4x4, Tokyo, and grid 8x8.
  int some_wires = 32;
  int some_clearings = 16;
  int few_clearings = 8;
  // Before a line is cleared. Five additions of eight sums are 1 % shorter in four times the time.
  int most_additions = 3;
  std::size_t sums_kept = 4;  ///< of each number of additions
  /// Of an elimination: what is left to be done, next to the gates so far, but as on this number of
  /// wires where there are more. Rows matrix on Tokyo, grid 4x4 and grid 8x8: 0.13 to 0.2 are
  /// alike.
  double weight_left = 0.16;
  int weight_wires = 32;
  double tie_noise = 1e-3;
  // A round. Rows matrix on grid 4x4, Tokyo and heavy hexagons; on grid 8x8, where wide beams and
  // cool walks count more, above some_wires.
  int starts = 2;
  int starts_large = 1;
  std::uint64_t walk_from_best = 3;  ///< in walks of a start
  std::uint64_t walk_from_best_large = 2;
  int least_width = 10;
  int most_width = 300;
  double state_price = 0.5;  ///< steps of a walk for n^2 times the vertices of a state
  /// Above 1: blocks that got shorter are made longer again, row matrix on heavy hexagons.
  Cooling cooling{2.0F, 0.3F};
  Cooling cooling_large{0.5F, 0.1F};
  Cooling cooling_by_depth{1.0F, 0.1F};
};
inline constexpr DeviceTuning device_tuning;

/// For sorting along a path, few layers: random maps and Clifford operators on lines of 8 to 64.
struct SortingTuning {
  std::array<float, 4> worth{0, 1, 0.35F, 0.2F};  ///< of an inversion less, by the gates of a split
  double busy_price = 0.3;  ///< in squares of distances, for each wire and layer taken in advance
  double gate_price = 0.3;  ///< by count, for each wire and gate
  int variants = 4;
  float noise = 1;  ///< of what a split gains
  int patience = 30;
  std::uint64_t first_part = 8;    ///< of the steps of the first round, one in so many
  std::uint64_t layers_part = 4;   ///< so many times those of later rounds, for few layers
  std::uint64_t memory = 1 << 20;  ///< the widest beam is this by n^2
  std::uint64_t most_width = 1000;
};
inline constexpr SortingTuning sorting_tuning;

/// A state of the beam, with its children.
inline std::uint64_t steps_of_sorting(int wires) {
  return static_cast<std::uint64_t>(wires) * static_cast<std::uint64_t>(wires) / 256 + 1;
}

/// Vertices that may go next in an elimination.
inline int device_vertices(int n) {
  return n <= device_tuning.all_vertices ? n : device_tuning.few_vertices;
}

/// Clearings of a line that are looked at further in each state.
inline int device_clearings(int n) {
  return n <= device_tuning.all_vertices ? 4 * n
         : n <= device_tuning.some_wires ? device_tuning.some_clearings
                                         : device_tuning.few_clearings;
}
/// Next to the gates so far.
inline double device_weight_left(int n) {
  const int wires = std::max(n, device_tuning.weight_wires);
  return device_tuning.weight_left * device_tuning.weight_wires / wires;
}

}  // namespace zelt::braidwerk::internal
