#pragma once

#include <cstdint>

namespace zelt::braidwerk::internal {

/// All numbers of the search for whole circuits that were tuned, but for those of the networks that
/// it is made of.
struct CircuitTuning {
  /// Circuits of so many rotations, or more, are walked from alone: beams are for smaller ones.
  int most_for_beams = 300;
  int piece = 2000;        ///< events in a piece of a circuit that is walked by itself, about
  int whole_piece = 4000;  ///< a circuit of no more events is not cut

  std::uint64_t first_steps = 16'000;  ///< of a round with beams; each is twice as long
  int most_doublings = 8;
  /// Windows per event of a walk in round 0; twice as many each round.
  std::uint64_t walk_windows = 8;
  int most_walk_doublings = 6;
};
inline constexpr CircuitTuning circuit_tuning;

}  // namespace zelt::braidwerk::internal
