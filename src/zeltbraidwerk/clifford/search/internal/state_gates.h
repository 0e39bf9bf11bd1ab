#pragma once

#include <array>
#include <utility>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/state_group.h"

namespace zelt::braidwerk::internal {

/// Scores all gates on a group at once, by what they do to its generators as they are.
class StateGates {
 public:
  struct Scored {
    double loss;  ///< of worth; below 0 where a gate gains
    Gate gate;
  };

  /// The `count` gates of least loss among those that take a letter from some generator, ties
  /// broken at random, in no order; fewer where there are fewer. None on a wire that is `taken`.
  const std::vector<Scored>& best(const StateGroup& group, int count, Rng& rng,
                                  const std::vector<char>& taken = {});

 private:
  using ByLabel = std::array<double, 3>;  ///< by label less one

  /// Worth of the generators with each pair of letters on a pair of qubits, a < b.
  std::array<ByLabel, 3>& pair(int a, int b) {
    return pairs_[static_cast<std::size_t>(b * (b - 1) / 2 + a)];
  }
  void fill(const StateGroup& group, const std::vector<char>& taken);
  void score(int a, int b, std::size_t count, Rng& rng);

  std::vector<int> qubits_;  // neither finished yet nor taken; the tables are by place in this list
  std::vector<int> place_;   // -1 where it has none
  std::vector<std::array<ByLabel, 3>> pairs_;
  std::vector<ByLabel> single_;
  std::vector<std::pair<int, std::size_t>> letters_;  // of one generator: place, label less one
  std::vector<Scored> best_;
};

}  // namespace zelt::braidwerk::internal
