#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/state_group.h"

namespace zelt::braidwerk::internal {

/// Scores all gates on a group at once, by what they do to its generators as they are.
class StateGates {
 public:
  struct Scored {
    std::int64_t change;
    Gate gate;
  };

  /// The `count` gates of least change among those that take a letter from some generator, at
  /// random among equals; fewer where there are not so many.
  const std::vector<Scored>& best(const StateGroup& group, int count, Rng& rng);

 private:
  /// For a pair of qubits a < b, by their labels less one: what is gained where a generator has
  /// these letters and loses one, and what is lost where it has them and they are told to have
  /// kept one more.
  struct Pair {
    std::array<std::array<std::int64_t, 3>, 3> falls;
    std::array<std::array<std::int64_t, 3>, 3> rises;
  };

  Pair& pair(int a, int b) {  // b above a
    return pairs_[static_cast<std::size_t>(b * (b - 1) / 2 + a)];
  }
  void fill(const StateGroup& group);
  void score(int a, int b, std::size_t count, Rng& rng);

  std::vector<int> qubits_;  // those that are not finished
  std::vector<int> place_;
  std::vector<Pair> pairs_;
  std::vector<std::array<std::int64_t, 3>> single_;  // what a letter more would cost, by letter
  std::vector<Scored> best_;
  std::vector<std::array<int, 2>> letters_;
};

}  // namespace zelt::braidwerk::internal
