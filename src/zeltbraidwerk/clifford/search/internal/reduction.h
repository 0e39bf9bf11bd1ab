#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/cost.h"
#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/beam.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A Clifford operator, signs left out, from both sides: row (0, i, c) is the Pauli operator that
/// it turns into label c on wire i, row (1, i, c) what it makes of label c on wire i. A gate behind
/// the operator multiplies rows of side 0, a gate before it rows of side 1, by the same rule.
///
/// A row is held by what it anticommutes with: three planes of a bit a wire, for X, Z and Y. So
/// rows add by XOR, each letter sets two bits, and row (s, i, c) is also, on the other side, the
/// set of the rows (q, e) whose letter on wire i anticommutes with c.
class OperatorRows {
 public:
  OperatorRows() = default;
  /// Of the images of X, then of Z, on all qubits.
  ZELTBRAIDWERK_KERNEL_EXPORT explicit OperatorRows(const PauliFrame& images);

  int wires() const { return wires_; }
  int words() const { return words_; }
  int plane_bytes() const { return plane_bytes_; }

  const Word* row(int side, int wire, int label) const {
    return rows_.data() + offset(side, wire, label);
  }
  Word* row(int side, int wire, int label) { return rows_.data() + offset(side, wire, label); }
  int weight(int side, int wire, int label) const { return weights_[number(side, wire, label)]; }

  int bit_of(int wire, int label) const { return (label - 1) * 8 * plane_bytes_ + wire; }
  int letter(int side, int wire, int label, int at) const;
  bool is_local() const { return total_ == 3 * wires_; }  ///< nothing but one-qubit gates is left

  ZELTBRAIDWERK_KERNEL_EXPORT void multiply(int side, const Gate& gate);
  /// Blind to one-qubit gates behind the operator and to the order of its outputs.
  ZELTBRAIDWERK_KERNEL_EXPORT std::uint64_t hash() const;

 private:
  std::size_t number(int side, int wire, int label) const {
    return static_cast<std::size_t>((side * wires_ + wire) * 3 + label - 1);
  }
  std::size_t offset(int side, int wire, int label) const {
    return number(side, wire, label) * static_cast<std::size_t>(words_);
  }
  void flip(Word* row, int wire, int label) const;
  void weigh(int side, int wire, int label);

  int wires_ = 0;
  int plane_bytes_ = 0;
  int words_ = 0;  ///< a row
  int total_ = 0;  ///< weight of side 0
  std::vector<Word> rows_;
  std::vector<std::int16_t> weights_;
};

/// The operator's reduction by gates behind and before it, as a problem of a beam.
class ZELTBRAIDWERK_KERNEL_EXPORT Reduction {
 public:
  struct State {
    OperatorRows rows;
    double cost = 0;
  };
  struct Move {
    int side;
    Gate gate;
  };

  Reduction(int wires, const OperatorCost& cost);

  State start(OperatorRows rows) const;
  template <class Sink>
  void children(const State& state, Rng&, Sink&& sink) {
    evaluate(state.rows);
    for (const Child& child : children_)
      sink(state.cost + static_cast<double>(child.change), child.move);
  }
  std::uint64_t hash(const State& state, const Move& move);
  void make(State& state, const Move& move) const;
  bool done(const State& state) const { return state.rows.is_local(); }

  /// A change of cost that is small beside those of most moves at the start.
  double small_change() const;

 private:
  struct Child {
    float change;
    Move move;
  };
  struct Masks;

  double cost_of(const OperatorRows& rows) const;
  void evaluate(const OperatorRows& rows);
  void evaluate_side(const OperatorRows& rows, int side);
  void price_columns(const OperatorRows& rows, int side);
  void price_rows(const OperatorRows& rows, int side);
  void add_children(const OperatorRows& rows, int side);

  int wires_;
  OperatorCost cost_;
  std::vector<double> value_;    ///< by weight
  std::vector<float> steps_up_;  ///< sums of what one letter more costs, by bytes of rows
  std::vector<float> steps_down_;
  std::vector<Word> letters_;       ///< of each wire: rows without a letter there, with each one
  std::vector<float> columns_;      ///< by end and end
  std::vector<std::int16_t> sums_;  ///< weights of sums of rows, by end and end
  std::vector<Child> children_;
  OperatorRows scratch_;
};

/// The circuit that a reduction to one-qubit gates stands for.
ZELTBRAIDWERK_KERNEL_EXPORT GateList circuit_of(const Finished<Reduction>& found);

}  // namespace zelt::braidwerk::internal
