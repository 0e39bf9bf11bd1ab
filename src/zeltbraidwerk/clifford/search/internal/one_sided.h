#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/operator_rows.h"
#include "zeltbraidwerk/search/internal/light_rows.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// An operator brought down to one-qubit gates by gates on one side of it alone: a problem of a
/// beam, for dense operators on many qubits.
///
/// The rows of side s are multiplied, and the rows of the other side, whose letters stand on the
/// wires of this one, are to become light: the cost is a sum of f(w) = -q^w over their weights.
/// Gates are tried on wires on which the lightest of them has letters, and priced by the eight
/// lightest alone, each letter at the slope of f. Pricing more of them, or exactly, leads to longer
/// circuits.
///
/// A step takes time n for the gate made, and (w / 3)^2 for those tried where the lightest has
/// weight w.
class OneSidedReduction {
 public:
  class State {
    friend class OneSidedReduction;
    std::vector<Word> rows_;              // three a wire, two planes each
    std::vector<std::uint16_t> weights_;  // of the rows of the other side
    std::vector<std::uint64_t> hashes_;   // of the three rows of a wire
    std::uint64_t hash_ = 0;
    LightRows::Sum sum_;  // over the other side
  };
  using Move = Gate;

  explicit OneSidedReduction(int wires);

  State start(const OperatorRows& rows, int side) const;
  template <class Sink>
  void children(const State& state, Rng&, Sink&& sink) {
    price_lightest(state);
    for (std::size_t l = 1; l < met_.size(); ++l) {
      for (std::size_t k = 0; k < l; ++k) {
        const auto changes = changes_of(met_[k], met_[l]);
        for (int a = 1; a < 4; ++a) {
          for (int b = 1; b < 4; ++b) {
            sink(state.sum_.cost + changes[static_cast<std::size_t>(3 * a + b - 4)],
                 {end_of(met_[k].wire, a), end_of(met_[l].wire, b)});
          }
        }
      }
    }
  }
  /// Blind to one-qubit gates on the side of the gates, and to the order of wires there.
  std::uint64_t hash(const State& state, const Move& gate) const;
  void make(State& state, const Move& gate) const;
  bool done(const State& state) const { return state.sum_.unfinished == 0; }

  /// What one letter changes in a row of a random operator.
  double small_change() const {
    const auto typical = static_cast<std::size_t>(9 * wires_ / 4);
    return light_.value(typical + 1) - light_.value(typical);
  }

  /// The circuit of an operator of which the gates have left one-qubit gates and a renaming.
  GateList circuit(const State& left, const std::vector<Move>& gates, int side) const;

 private:
  /// What the lightest rows of the other side have on a wire, a bit each; by label.
  struct Met {
    int wire = 0;
    std::array<std::uint8_t, 4> x{};
    std::array<std::uint8_t, 4> z{};
    std::array<double, 4> price{};  ///< of the letters; 0: of all three labels
  };

  static constexpr int letter_limit = 3;  // a wire with no more letters is done

  std::size_t offset(int wire, int label) const {
    return static_cast<std::size_t>((wire * 3 + label - 1) * 2 * words_);
  }
  int label_at(const State& state, int wire, int label, int at) const;
  void price_lightest(const State& state);
  std::array<double, 9> changes_of(const Met& k, const Met& l) const;
  void weigh(State& state, int wire, int sign) const;
  std::uint64_t hash_of(const Word* rows) const;

  int wires_;
  int words_;        // a plane
  LightRows light_;  // of the other side
  std::vector<Met> met_;
};

}  // namespace zelt::braidwerk::internal
