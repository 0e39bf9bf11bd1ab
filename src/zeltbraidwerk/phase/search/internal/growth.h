#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/phase/search/internal/steiner_weights.h"
#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// What a growing parity network lowers. A parity that is w - 1 CNOTs away, from w wires where any
/// two may be joined, counts 1 + decay + ... + decay^(w - 2): less and less the longer the way.
/// Each row of the linear map, and of its transposed inverse, counts
/// map_share * (w^map_exponent - 1) / map_exponent, or map_share * log w for exponent 0; on a graph
/// the wire on which it stands counts as one of the row's.
///
/// Heavy parities count more when few are left, as fewer of the gates towards one serve others: the
/// decay rises by `decay_rise` with every halving of the parities left, up to `most_decay`.
struct GrowthCost {
  double decay = 0.5;  ///< at the start
  double decay_rise = 0;
  double map_share = 0;
  double map_exponent = -1;
};

/// The parities that were not on any wire yet, as sums of what the wires hold now, and what that
/// is.
class GrowthState {
 public:
  int left() const { return left_; }

 private:
  friend class Growth;
  std::vector<Word> words_;            // parities; rows of the map; rows of its transposed inverse
  std::vector<std::uint64_t> prints_;  // of what each wire holds, see Growth::print_
  int left_ = 0;
  std::uint64_t hash_ = 0;
};

/// CNOT(control, target).
struct GrowthMove {
  std::uint16_t control;
  std::uint16_t target;
};

/// The problem of growing a parity network gate by gate until every parity has stood on a wire, for
/// a beam search. States that hold the same on other wires are one.
///
/// All CNOTs of a state are scored together in O(sum of w n / 8 + n^2) for parities of w wires.
class Growth {
 public:
  using State = GrowthState;
  using Move = GrowthMove;

  /// With a graph, which is connected, gates are on its edges alone.
  Growth(int n, int parities, const GrowthCost& cost, const BitGraph* graph = nullptr);

  /// One column per parity, none of them zero.
  State start(const BitMatrix& parities) const;

  template <class Sink>
  void children(const State& state, Rng&, Sink&& sink) {
    const std::int64_t base = score(state);
    for (const Move& move : moves_) {
      const auto place = static_cast<std::size_t>(move.target * lanes_ + move.control);
      sink(static_cast<double>(base + gains_[place]) * unit_, move);
    }
  }

  /// All states of a level count by the parities that its best state has left: were each counted by
  /// its own, to serve a parity would raise the cost of all others.
  void begin_level(const State& best);
  std::uint64_t hash(const State& state, const Move& move) const;
  void make(State& state, const Move& move) const;
  bool done(const State& state) const { return state.left_ == 0; }

 private:
  /// What parities cost while about so many are left.
  struct Prices {
    double rise_share;  // what a wire more costs, of what a wire less saves beyond that
    std::vector<std::int32_t> cost;       // of a parity by its weight
    std::vector<std::int32_t> curvature;  // what a wire less saves beyond what a wire more costs
  };
  std::int32_t scaled(double value) const;
  Prices prices_at(double decay, std::size_t heaviest) const;
  /// Which of prices_ there are while so many are left.
  std::size_t stage(int left) const;

  /// Fills gains_; returns the cost of the state.
  std::int64_t score(const State& state);
  std::int64_t score_on_graph(const State& state);
  std::int64_t score_map_on_graph(const State& state);

  const Word* map_row(const State& state, int wire) const {
    return state.words_.data() + offset(most_ + wire);
  }
  const Word* dual_row(const State& state, int wire) const {
    return state.words_.data() + offset(most_ + n_ + wire);
  }

  // The words of a parity, and of the rows of the map and of its dual after all of them.
  std::size_t offset(int k) const {
    return static_cast<std::size_t>(k) * static_cast<std::size_t>(stride_);
  }

  int n_;
  int stride_;
  int most_;   // parities
  int lanes_;  // wires, in full vectors
  double unit_;
  std::optional<SteinerWeights> steiner_;  // on a graph
  std::vector<Move> moves_;
  std::vector<std::uint64_t> print_;      // of an input
  std::vector<Prices> prices_;            // by stage
  std::size_t stage_ = 0;                 // of the level
  std::vector<std::int32_t> map_cost_;    // by weight of a row
  std::vector<std::int32_t> gains_;       // by target and control
  std::vector<std::int32_t> lane_;        // scratch
  std::vector<std::int32_t> by_control_;  // scratch
  std::vector<std::vector<int>> near_;    // on a graph, by wire
  std::vector<int> changed_;              // scratch
};

}  // namespace zelt::braidwerk::internal
