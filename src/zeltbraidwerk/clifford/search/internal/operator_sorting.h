#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/operator_rows.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// How an operator is sorted along a path.
struct SortingWay {
  int side = 0;           ///< of the rows that are sorted
  std::vector<int> path;  ///< the wire of each place, each a neighbour of the next
  bool turned = false;    ///< outputs end in the opposite order
};

/// An operator brought down to one-qubit gates by gates between neighbours of a path, layer by
/// layer: a problem of a beam.
///
/// Each place holds a plane: the three rows of its wire. Gates on two neighbours split what their
/// planes span into two planes anew, in one of 20 ways; one way takes three gates, nine take two.
/// At the end the plane of place p is to be on the p-th input alone.
///
/// The inputs give each row a level, the highest there is in it: two levels for each input, those
/// of the last one lowest. Up to products with rows of later places the two levels of a plane are
/// as low as can be, and all planes together have every level once. A split deals out the four
/// levels of two planes, and the operator is sorted when the levels are. Not every split deals as
/// it should, since the rows of a plane anticommute: some go down together, others one by one. But
/// where levels are not sorted, some pair has a split with fewer inversions, or as many and its
/// lowest level in the later plane: the greedy run ends, too.
///
/// About 3.5 n layers on n random qubits, and 2.5 n from wide beams. A child takes time n^3 / 16.
class OperatorSorting {
 public:
  struct State {
    std::vector<Word> rows;            ///< two for each place
    std::vector<std::int16_t> levels;  ///< two for each place
    std::vector<std::int8_t> busy;     ///< by place: layers that gates have taken in advance
    std::uint64_t hash = 0;
  };
  /// Splits that begin in a layer, as this problem has stored them.
  struct Move {
    std::uint32_t first, last;
  };

  /// `variants` layers are tried for each state, all but the first with noise.
  OperatorSorting(const OperatorRows& rows, SortingWay way, int variants, Rng& rng, Meter& meter);

  State start();
  template <class Sink>
  void children(const State& state, Rng&, Sink&& sink) {
    price_splits(state);
    meter_.charge(steps_of_sorting(wires_));
    for (int variant = 0; variant < variants_; ++variant) {
      const double score = compose(state, variant != 0);
      sink(score, Move{first_, static_cast<std::uint32_t>(chosen_.size())});
    }
  }
  std::uint64_t hash(const State& state, const Move& move) const;
  void make(State& state, const Move& move) const;
  bool done(const State& state) const;

  GateList circuit(const std::vector<Move>& moves) const;

 private:
  /// The planes of a place and the next one, split anew.
  struct Choice {
    std::uint16_t place;
    std::uint8_t split;
    std::uint8_t later;  ///< which of the four levels, from the lowest on, go to the later plane
  };
  struct Offer {
    Choice choice;
    float gain;
  };

  static std::size_t at(int k) { return static_cast<std::size_t>(k); }
  const Word* row(const State& state, int place, int k) const {
    return state.rows.data() + at(2 * place + k) * at(words_);
  }
  int reduce(Word* row) const;
  void add_to_span(const Word* row, int level);
  void clear_span();

  void price_splits(const State& state);
  void price_pair(const State& state, int place);
  double compose(const State& state, bool noisy);
  void match();
  void deal(std::vector<std::int16_t>& levels, const Choice& choice) const;
  double score(const std::vector<std::int16_t>& levels) const;
  void turn(State& state, int place, int a, int b) const;

  const OperatorRows& rows_;
  SortingWay way_;
  int wires_;
  int words_;  ///< a row
  int variants_;
  Rng& rng_;
  Meter& meter_;
  std::vector<std::array<int, 2>> ranked_;  ///< two labels of each input, the lower one first
  std::vector<Choice> chosen_;              ///< of all layers
  std::uint32_t first_ = 0;                 ///< of the last layer
  // Scratch.
  std::vector<Word> span_;  ///< rows of later places, by level
  std::vector<char> spans_;
  std::vector<Word> four_;
  std::vector<std::vector<Offer>> offers_;  ///< by the earlier place
  std::vector<Offer> best_;
  std::vector<std::int16_t> dealt_;
  std::vector<float> total_;
};

}  // namespace zelt::braidwerk::internal
