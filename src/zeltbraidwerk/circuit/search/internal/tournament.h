#pragma once

#include <utility>

namespace zelt::braidwerk::internal {

/// Many short walks from one circuit, a longer one from the better of each two, and so on to a
/// single one, of which the end is returned. How short a walk can make a circuit is mostly settled
/// by where its first windows lead, which no length makes up for: so many beginnings are tried,
/// each for little. `count(circuit)` is the less the better; `walk(from, round)` returns what a
/// walk from a circuit ends at, never a worse one. The first walks are round 0.
template <class Circuit, class Count, class Walk>
Circuit play_tournament(const Circuit& start, int rounds, const Count& count, const Walk& walk) {
  if (rounds == 0) return walk(start, 0);
  Circuit first = play_tournament(start, rounds - 1, count, walk);
  Circuit second = play_tournament(start, rounds - 1, count, walk);
  if (count(second) <= count(first)) first = std::move(second);
  return walk(first, rounds);
}

/// Of all its walks, where one of the first has length 1 and each round's are `growth` times as
/// long as those before.
inline double tournament_length(int rounds, double growth) {
  double all = 1;
  double walk = 1;
  for (int round = 1; round <= rounds; ++round) {
    walk *= growth;
    all = 2 * all + walk;
  }
  return all;
}

/// Of the longest tournament of no more than this length; -1 where there is none.
inline int rounds_within(double length, double growth) {
  int rounds = -1;
  while (tournament_length(rounds + 1, growth) <= length) ++rounds;
  return rounds;
}

}  // namespace zelt::braidwerk::internal
