#pragma once

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/operator_rows.h"
#include "zeltbraidwerk/search/internal/line_reduction.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// The rows of the wires on one side of an operator: three for each wire, one per Pauli label, with
/// two planes each. A gate on two wires multiplies their rows.
class WireLines {
 public:
  using Move = Gate;
  /// What the lightest rows of the other side have on a wire, one bit for each row; by label.
  struct Entries {
    int wire = 0;
    std::array<std::uint8_t, 4> x{};
    std::array<std::uint8_t, 4> z{};
    std::array<double, 4> price{};  ///< of the letters; 0: of all three labels
  };

  explicit WireLines(int wires) : wires_(wires), words_(words_for(wires)) {}

  int size() const { return wires_; }
  int words() const { return 6 * words_; }
  /// The letter of a label's row at a place.
  int label_at(const Word* line, int label, int place) const;

  LightRows light_rows() const;
  std::pair<int, int> lines_of(const Gate& gate) const {
    return {wire_of(gate.a), wire_of(gate.b)};
  }
  void weigh(const Word* line, int sign, LightRows::Weights& weights) const;
  void weigh_changed(const Gate&, const Word* a, const Word* b, int sign,
                     LightRows::Weights& weights) const {
    weigh(a, sign, weights);
    weigh(b, sign, weights);
  }
  void change(const Gate& gate, Word* a, Word* b) const;
  std::uint64_t hash_of(const Word* line) const;
  /// The row of the third label is the product of the others.
  bool has(const Word* line, int place) const {
    unsigned any = 0;
    for (int plane = 0; plane < 4; ++plane) any |= bit(line, plane, place);
    return any != 0;
  }
  Entries entries_of(int wire, const Word* line, const LightRows& light) const;

  template <class F>
  void each_move(const std::vector<Entries>& entries, const LightRows& light, F&& f) const {
    for (std::size_t l = 1; l < entries.size(); ++l) {
      for (std::size_t k = 0; k < l; ++k) {
        const auto changes = changes_of(entries[k], entries[l], light);
        for (int a = 1; a < 4; ++a) {
          for (int b = 1; b < 4; ++b) {
            f(changes[static_cast<std::size_t>(3 * a + b - 4)],
              Gate{end_of(entries[k].wire, a), end_of(entries[l].wire, b)});
          }
        }
      }
    }
  }

 private:
  unsigned bit(const Word* line, int plane, int place) const {
    return static_cast<unsigned>(line[plane * words_ + place / word_bits] >> (place % word_bits)) &
           1U;
  }
  static std::array<double, 9> changes_of(const Entries& k, const Entries& l,
                                          const LightRows& light);

  int wires_;
  int words_;  // of a plane
};

/// An operator brought down to one-qubit gates by gates on one side of it alone, for dense
/// operators on many qubits. The rows of side s are multiplied, and the rows of the other side,
/// whose letters stand on the wires of this one, become light.
///
/// Hashes are the same for all one-qubit gates on the side of the gates.
class OneSidedReduction : public LineReduction<WireLines> {
 public:
  explicit OneSidedReduction(int wires) : LineReduction(WireLines(wires)) {}

  State start(const OperatorRows& rows, int side) const;

  /// What one letter changes in a row of a random operator.
  double small_change() const {
    const auto typical = static_cast<std::size_t>(9 * lines().size() / 4);
    return light().value(typical + 1) - light().value(typical);
  }

  /// The circuit of an operator of which the gates have left one-qubit gates and a renaming.
  GateList circuit(const State& left, const std::vector<Gate>& gates, int side) const;
};

}  // namespace zelt::braidwerk::internal
