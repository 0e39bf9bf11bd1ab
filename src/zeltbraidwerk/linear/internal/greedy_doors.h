#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "zeltbraidwerk/foundations/boolean_matrix.h"
#include "zeltbraidwerk/foundations/random.h"
#include "zeltbraidwerk/linear/greedy_ones.h"
#include "zeltbraidwerk/linear/internal/beam.h"
#include "zeltbraidwerk/linear/internal/greedy.h"
#include "zeltbraidwerk/linear/internal/saving_table.h"

/// \file
/// The way from the plain values of the public greedy functions to the kernels and back.

namespace zelt::braidwerk::internal {

template <typename T>
using Table = std::vector<std::vector<T>>;

template <typename T>
const T& entry(const Table<T>& table, int i, int j) {
  return table[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
}

template <typename T>
T& entry(Table<T>& table, int i, int j) {
  return table[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
}

inline synthesis::Operation to_operation(LineAddition a) {
  return {a.from, a.to, a.row};
}

/// The shared generator, called where a test may put another one in its place.
inline int shared_draw(int a, int b) {
  return random::uniform(a, b);
}

/// Visits all additions in the order of enumeration.
template <typename Visit>
void each_addition(int n, Visit&& visit) {
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      if (i == j) continue;
      visit(LineAddition{i, j, true});
      visit(LineAddition{i, j, false});
    }
  }
}

/// Puts an entry into `out` at `count` and counts it.
template <typename Scored>
void put(std::vector<Scored>& out, int& count, Scored scored) {
  const auto place = static_cast<std::size_t>(count++);
  if (place < out.size()) {
    out[place] = std::move(scored);
  } else {
    out.push_back(std::move(scored));
  }
}

/// All additions with the costs that `cost` gives them.
template <typename Scored, typename Cost>
int put_all(int n, std::vector<Scored>& out, Cost&& cost) {
  int count = 0;
  each_addition(n, [&](LineAddition a) { put(out, count, Scored{cost(a), to_operation(a)}); });
  return count;
}

/// The candidates after a lookahead.
template <typename Scored, typename Position>
int put_ahead(const Position& position, Beam beam, std::vector<Scored>& out) {
  int count = 0;
  for (const Candidate& found : look_ahead(position, beam, Control{})) {
    put(out, count, Scored{found.score(), to_operation(found.addition())});
  }
  return count;
}

template <typename Position>
synthesis::Operation next_operation(Position position, Beam beam, bool only_gains = false) {
  return to_operation(next_addition(position, beam, only_gains, shared_draw, Control{}));
}

inline structures::CnotCircuit run_greedy(int n, const BoolMatrix& a, std::vector<int>& perm,
                                          const GreedyOptions& options) {
  return greedy_synthesis(BitMatrix::pack(a, n, n), perm, options, shared_draw, Control{}).circuit;
}

/// Row and column savings held by a caller.
inline Savings load_savings(int n, const Table<int>& row_savings,
                            const Table<int>& column_savings) {
  Savings savings(n);
  each_addition(n, [&](LineAddition a) {
    savings.side[a.row].set(a.from, a.to,
                            entry(a.row ? row_savings : column_savings, a.from, a.to));
  });
  for (SavingTable& table : savings.side) table.find_largest();
  return savings;
}

}  // namespace zelt::braidwerk::internal
