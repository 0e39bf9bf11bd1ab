#pragma once

#include <cstdint>

namespace zelt::braidwerk::internal {

/// All numbers of the search for whole circuits that were tuned, but for those of the networks that
/// it is made of.
struct CircuitTuning {
  /// Circuits of so many rotations, or more, are walked from alone: beams are for smaller ones.
  int most_for_beams = 300;
  int most_beside_tournaments = 100;  ///< after the first round, where a budget is given
  int most_qubits_for_beams = 256;    ///< closings of wider ones take too long
  int piece = 2000;        ///< events in a piece of a circuit that is walked by itself, about
  int whole_piece = 4000;  ///< a circuit of no more events is not cut

  /// A circuit of no more events is not cut where its depth is to be kept: pieces that keep theirs
  /// may be deeper together.
  int most_limited = 20'000;

  std::uint64_t routing_steps = 4'000;  ///< of the first network on a device
  std::uint64_t first_steps = 16'000;   ///< of a round with beams; each is twice as long
  int most_doublings = 8;
  /// What of a round beams get in one direction: half as much each time that they find nothing
  /// better.
  double beam_share = 0.25;
  double least_beam_share = 0.125;
  /// The round in which rotations are searched for alone, and what is left of the operator closed
  /// by a Clifford search of its own; and what part of the round's steps it gets.
  int open_round = 1;
  std::uint64_t open_part = 4;
  /// What part of a round's steps is spent beside it on networks with outputs anywhere.
  std::uint64_t free_part = 4;
  /// Steps per gate of the first round of exact search and windows on two wires in turns, at least.
  std::uint64_t alternation_steps = 32;
  /// Two-wire gates of a block on three wires that is taken apart in the given circuit, at least.
  int least_on_three_wires = 8;
  /// Windows per event of the first walk of a chain; the next ones are each twice as long.
  std::uint64_t walk_windows = 8;
  int walks_of_chain = 7;
  /// Windows per event of the first walks of a tournament; how many times longer those of each next
  /// round are; how many of all exchange wires.
  double tournament_windows = 16;
  double tournament_growth = 3;
  float tournament_exchanges = 0.15F;
  int least_rounds = 3;  ///< after the first walks: 1040 windows per event in all, at least
  int most_rounds = 4;   ///< of the first two tournaments, one more of the next two, and so on
  /// What of the time that is left a tournament gets, where the time is known.
  double part_of_time = 0.6;
};
inline constexpr CircuitTuning circuit_tuning;

}  // namespace zelt::braidwerk::internal
