#pragma once

#include <cstdint>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/search/internal/light_rows.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A matrix M brought down to a permutation by additions of columns alone: a problem of a beam, for
/// dense matrices.
///
/// The cost is a sum of f(w) = -q^w, where w counts the ones of a row of M and of the same row of
/// N, the transpose of the inverse. Additions are tried between columns in which the lightest row
/// has ones, and priced by the eight lightest rows alone, each one at the slope of f.
class ColumnReduction {
 public:
  class State {
    friend class ColumnReduction;
    std::vector<Word> columns_;  // of M, then of N
    std::vector<std::uint16_t> weights_;
    std::vector<std::uint64_t> hashes_;
    std::uint64_t hash_ = 0;
    LightRows::Sum sum_;
  };
  /// Column `to` of M gains column `from`, and column `from` of N column `to`.
  struct Move {
    std::uint16_t to;
    std::uint16_t from;
  };

  explicit ColumnReduction(int n);

  State start(const BitMatrix& m) const;
  template <class Sink>
  void children(const State& state, Rng&, Sink&& sink) {
    price_lightest(state);
    for (const Met& to : met_) {
      for (const Met& from : met_) {
        if (to.column == from.column) continue;
        const double change = light_.price(to.of_m ^ from.of_m) - light_.price(to.of_m) +
                              light_.price(from.of_n ^ to.of_n) - light_.price(from.of_n);
        sink(state.sum_.cost + change, {to.column, from.column});
      }
    }
  }
  /// Blind to the order of columns.
  std::uint64_t hash(const State& state, const Move& move) const;
  void make(State& state, const Move& move) const;
  bool done(const State& state) const { return state.sum_.unfinished == 0; }

  GateList circuit(const State& reduced, const std::vector<Move>& moves) const;

 private:
  /// What the lightest rows have in a column, a bit each.
  struct Met {
    std::uint16_t column;
    std::uint8_t of_m;
    std::uint8_t of_n;
  };

  std::size_t offset(int kind, int column) const {
    return static_cast<std::size_t>((kind * n_ + column) * words_);
  }
  void price_lightest(const State& state);
  void weigh(State& state, int kind, int column, int sign) const;
  std::uint64_t hash_of(const Word* of_m, const Word* of_n) const;

  int n_;
  int words_;
  LightRows light_;
  std::vector<Met> met_;
};

}  // namespace zelt::braidwerk::internal
