#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// What a reduction lowers: the sum of f over the weights of all rows and columns of M, and of its
/// inverse as well where asked, with f(w) = (w^exponent - 1) / exponent, or log w for exponent 0.
/// The smaller the exponent, the more the light lines count; it is to fall with the size.
struct ReductionCost {
  double exponent = -1;
  bool with_inverse = false;
  /// When above 0, additions are tried to this number of the lightest rows and columns with more
  /// than one 1, and of the lines that cross the lightest, alone.
  int focus = 0;
};

/// Line `to` of a side gains line `from`: rows on side 0, columns on side 1.
struct SideAddition {
  std::uint16_t side;
  std::uint16_t to;
  std::uint16_t from;
};

/// A matrix M on its way to a permutation, and N, the transpose of its inverse, where the cost asks
/// for it; both by rows and by columns.
class ReductionState {
 public:
  ReductionState() = default;

 private:
  friend class Reduction;
  std::vector<Word> words_;             // the lines of kind k from k * n * stride on
  std::vector<std::uint16_t> weights_;  // the same
  std::uint64_t hash_ = 0;
  double score_ = 0;
  int excess_ = 0;  // ones of M beyond one per row
};

/// The problem of reducing a matrix by additions of rows and of columns, for a beam search. All
/// additions of both sides are children.
class Reduction {
 public:
  using State = ReductionState;
  using Move = SideAddition;

  Reduction(int n, const ReductionCost& cost);

  State start(const BitMatrix& m) const;

  template <class Sink>
  void children(const State& state, Rng&, Sink&& sink) {
    score_children(state);
    for (int side = 0; side < 2; ++side) {
      const std::vector<std::uint16_t>& targets = targets_[side];
      const float* gain = gains_[side].data();
      for (const std::uint16_t to : targets) {
        for (int from = 0; from < n_; ++from, ++gain) {
          if (from == to) continue;
          sink(state.score_ + static_cast<double>(*gain),
               Move{static_cast<std::uint16_t>(side), to, static_cast<std::uint16_t>(from)});
        }
      }
    }
  }

  /// What every addition to a line of a side changes the score by: that of line `from` to line `to`
  /// stands at to * n + from. Valid until the next state is scored; not for costs with a focus.
  void score_children(const State& state);
  const float* gains(int side) const { return gains_[side].data(); }
  /// The same for a single one, without rounding to floats.
  double gain(const State& state, const Move& move) const;

  static double score(const State& state) { return state.score_; }
  static std::uint64_t hash(const State& state) { return state.hash_; }
  std::uint64_t hash(const State& state, const Move& move) const;
  void make(State& state, const Move& move) const;
  bool done(const State& state) const { return state.excess_ == 0; }

  /// The circuit of a reduced state and the moves that led to it.
  GateList circuit(const State& reduced, const std::vector<Move>& moves) const;

 private:
  // Kinds of lines: rows of M, its columns, rows of N, its columns.
  const Word* line(const State& state, int kind, int k) const {
    return state.words_.data() + offset(kind, k);
  }
  std::size_t offset(int kind, int k) const {
    return (static_cast<std::size_t>(kind) * static_cast<std::size_t>(n_) +
            static_cast<std::size_t>(k)) *
           static_cast<std::size_t>(stride_);
  }
  std::size_t index(int kind, int k) const {
    return static_cast<std::size_t>(kind) * static_cast<std::size_t>(n_) +
           static_cast<std::size_t>(k);
  }

  void choose_targets(const State& state);
  void add(State& state, int kind, int to, int from) const;
  double change(const State& state, int kind, int to, int from) const;
  void count(State& state) const;

  int n_;
  int stride_;
  int kinds_;
  ReductionCost cost_;
  std::vector<double> f_;
  std::vector<float> gain_of_weight_;  // f(w2) - f(w1) is a difference of these
  std::vector<std::uint64_t> keys_;    // of entry (r, c)
  std::vector<std::uint16_t> targets_[2];
  std::vector<float> gains_[2];    // n for each target
  std::vector<float> curvatures_;  // scratch: (c, j) is the second difference of f at line c, or 0
  std::vector<float> rises_;       // scratch: first differences of f, then their sums
  std::vector<float> row_;         // scratch
};

}  // namespace zelt::braidwerk::internal
