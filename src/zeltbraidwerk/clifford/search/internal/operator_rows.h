#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// The two labels beside one.
inline constexpr int other_labels[4][2] = {{0, 0}, {2, 3}, {3, 1}, {1, 2}};

/// A Clifford operator, signs left out, from both sides: row (0, i, c) is the Pauli operator that
/// it turns into label c on wire i, row (1, i, c) what it makes of label c on wire i. A gate after
/// the operator multiplies rows of side 0, one before it rows of side 1, by the same rule.
class OperatorRows {
 public:
  OperatorRows() = default;
  /// Of the images of X, then of Z, on all qubits.
  explicit OperatorRows(const PauliFrame& images);

  int wires() const { return wires_; }
  int words() const { return words_; }  ///< a plane

  /// The plane of the X parts of a row, that of the Z parts after it.
  const Word* row(int side, int wire, int label) const {
    return rows_.data() + number(side, wire, label) * 2 * static_cast<std::size_t>(words_);
  }
  int label_at(int side, int wire, int label, int at) const;
  /// Letters of the three rows of a wire together: three for each qubit of which the wire holds
  /// all, two where it holds one label.
  int weight(int side, int wire) const {
    return weights_[static_cast<std::size_t>(side * wires_ + wire)];
  }
  int weight() const { return total_; }                   ///< of all wires of a side
  bool is_local() const { return total_ == 3 * wires_; }  ///< nothing but one-qubit gates is left

  void multiply(int side, const Gate& gate);
  /// Gates one after the other: the other side follows at the end, from all rows of this one.
  void multiply(int side, std::span<const Gate> gates);
  /// Blind to one-qubit gates after the operator and to the order of its outputs.
  std::uint64_t hash() const;

 private:
  std::size_t number(int side, int wire, int label) const {
    return static_cast<std::size_t>((side * wires_ + wire) * 3 + label - 1);
  }
  Word* row(int side, int wire, int label) {
    return rows_.data() + number(side, wire, label) * 2 * static_cast<std::size_t>(words_);
  }
  void flip(int side, int wire, int label, int at, int by);
  void multiply_own(int side, const Gate& gate);
  void mirror(int side);  ///< the other side from this one
  void sum_up(int side, int wire);
  void weigh(int side, int wire);

  int wires_ = 0;
  int words_ = 0;
  int total_ = 0;  ///< weight of side 0
  std::vector<Word> rows_;
  std::vector<std::int16_t> weights_;
};

}  // namespace zelt::braidwerk::internal
