#pragma once

#include <cstddef>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/wire_frame.h"

namespace zelt::braidwerk::internal {

/// An invertible map of which some outputs were exchanged with as many inputs. What the others have
/// to do with each other is a smaller invertible map, the Schur complement: that of the circuits in
/// which each exchanged output is 0.
///
/// A wire has a row and a column that stand for its output and its input.
class ExchangedMap {
 public:
  explicit ExchangedMap(const BitMatrix& m);

  int wires() const { return static_cast<int>(rows_.size()); }
  int exchanged() const { return static_cast<int>(rows_out_.size()); }

  /// Of the wires: row w is the output on wire w, column w the input.
  BitMatrix matrix() const { return block(rows_, cols_); }
  /// Row p: the inputs on which exchanged row p depends.
  BitMatrix parities() const { return block(rows_out_, cols_); }
  /// Row q: the outputs on which exchanged column q has an effect.
  BitMatrix effects() const { return block(rows_, cols_out_).transposed(); }
  /// Whether exchanged row p and column q can come back together.
  bool can_return(int p, int q) const { return tableau_.get(at(rows_out_, p), at(cols_out_, q)); }

  /// Exchanges an output and an input of few entries.
  void exchange_lightest(float noise, Rng& rng);
  /// Exchanges them back. Theirs is a new wire, the last: it receives the parity of p, then sends
  /// itself to where q has an effect.
  void bring_back(int p, int q);
  /// The output on wire w becomes the one that was on wire frame.output_on(w).
  void move_outputs(const WireFrame& frame);

  /// The number of the input on a wire.
  int input(int wire) const { return at(input_, at(cols_, wire)); }
  /// Where the outputs are, by the numbers of both, when none is exchanged.
  WireFrame frame() const;

 private:
  static int at(const std::vector<int>& list, int k) { return list[static_cast<std::size_t>(k)]; }
  BitMatrix block(const std::vector<int>& rows, const std::vector<int>& cols) const;
  void pivot(int row, int col);

  BitMatrix tableau_;
  std::vector<int> output_;  // by row: an output, or an input where exchanged
  std::vector<int> input_;   // by column, the other way round
  std::vector<int> rows_;    // by wire
  std::vector<int> cols_;
  std::vector<int> rows_out_;
  std::vector<int> cols_out_;
};

}  // namespace zelt::braidwerk::internal
