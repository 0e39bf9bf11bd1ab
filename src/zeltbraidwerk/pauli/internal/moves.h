#pragma once

#include <functional>
#include <span>
#include <vector>

#include "zeltbraidwerk/graphs/internal/matcher.h"
#include "zeltbraidwerk/pauli/greedy_pauli_synth.h"
#include "zeltbraidwerk/pauli/internal/rotations.h"

namespace zelt::braidwerk::internal {

/// The first rows of a frame in some order, fetched as far as a score looks, and the moves that
/// clear the most letters from them.
class Head {
 public:
  /// `next` gives the row indices in order, and -1 at the end. Both must outlive this.
  Head(const PauliFrame& frame, const std::function<int()>& next) : frame_(frame), next_(next) {}

  const PauliFrame& frame() const { return frame_; }

  /// Empty again, for rows that have changed; then an index put in front of what `next` gives.
  void clear();
  void push_back(int row);

  /// How many rows from the first on hold I on the qubit.
  int lead(int q);
  /// By how much a move lengthens the leads of its qubits.
  int score(const Move& move);

  /// The last of the best moves between two of the qubits, which all have a lead of 0, going
  /// through the bases first.
  Move best_move(std::span<const int> qubits);
  /// The best moves of a maximum-weight matching, those of a positive score if asked.
  std::vector<Move> best_matching(Matcher& matcher, bool only_gains);

 private:
  struct Letters {
    Word x, z;
  };

  Letters in_basis(int q, int code, std::size_t w) const;
  int score(const Move& move, int lead_before);
  template <class Set>
  int first_row(Set&& set);
  bool fetch();

  const PauliFrame& frame_;
  const std::function<int()>& next_;
  int rows_ = 0;
  std::vector<Letters> words_;  // for 64 rows after another, each qubit's
};

}  // namespace zelt::braidwerk::internal
