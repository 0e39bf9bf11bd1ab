#pragma once

#include <span>
#include <vector>

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/pauli/greedy_pauli_synth.h"
#include "zeltbraidwerk/phase/internal/columns.h"

namespace zelt::braidwerk::internal {

/// The rows of a frame, stably sorted by weight between the moves, one row after the other as they
/// are asked for.
///
/// A stable sort on top of earlier ones puts of two rows the one first that is lighter now; of
/// equal ones, the one that was lighter at the sort before; and so on back to the order at the
/// start. Only the digits of these weights are kept, as planes over all rows. next() looks for the
/// lightest rows and is a radix sort among them that stops where a row stands alone, so few rows at
/// the head cost little, however many there are.
class SortedRows {
 public:
  explicit SortedRows(PauliFrame frame);

  const PauliFrame& frame() const { return frame_; }
  /// The number that a row of the frame had at the start.
  int number(int row) const { return numbers_[static_cast<std::size_t>(row)]; }

  /// Sorts. Rows of the frame may change places: earlier row indices are void.
  void sort();
  /// The next row in order, -1 when there is none left.
  int next();
  void erase(int row);
  /// Plays moves on disjoint qubits.
  void play(std::span<const Move> moves, std::vector<structures::Gate>& circuit);

 private:
  /// Rows of one weight that stand together as far as the past before `level` tells. The words of
  /// all groups lie one after the other, those of the first rows last, each group's in descending
  /// order.
  struct Group {
    std::size_t level;
    std::size_t words;
  };

  void restart();
  bool gather_lightest();
  bool split_top();
  void settle();
  void weigh();
  void remember(const Word* digit);
  void play(const Move& move, bool is_only, std::vector<structures::Gate>& circuit);

  PauliFrame frame_;
  std::vector<int> numbers_;
  std::vector<Word> left_;  // plane of the rows not erased
  int count_left_;
  BitMatrix weights_;       // bit-sliced
  std::vector<Word> past_;  // digits of earlier weights, the latest and highest last
  std::vector<Word> up_;
  std::vector<Word> down_;
  std::vector<Word> to_come_;   // plane of the rows heavier than those of the groups
  std::vector<Word> lightest_;  // scratch
  std::vector<Group> groups_;
  Columns stack_;
  Columns zeros_;
  std::size_t work_ = 0;  // words looked at since the rows were last settled
};

}  // namespace zelt::braidwerk::internal
