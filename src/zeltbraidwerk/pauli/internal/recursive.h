#pragma once

#include <vector>

#include "zeltbraidwerk/pauli/internal/rotations.h"
#include "zeltbraidwerk/phase/internal/columns.h"

namespace zelt::braidwerk::internal {

using RowSet = Columns;  ///< rows of a frame: columns of its planes

/// Recursive synthesis of the rows of a frame; see pauli_synth. `done` is a plane of the rows that
/// were emitted. A row that is done is still carried along, and counted within its group.
class RecursiveSynthesis {
 public:
  PauliFrame& frame;
  const std::vector<structures::Parameter>& params;
  std::vector<structures::Gate>& circuit;
  std::vector<Word>& done;

  /// Everything but the rows done and identity strings. Each pass emits one row at least: the first
  /// group that comes to its end is met before any other group has disturbed its rows, which agree
  /// on every qubit by then.
  void run();

  /// One group: folds the letters that all its rows share into the target, -1 while there is none,
  /// and branches on one of the qubits `cols`.
  void serve(int target, const RowSet& rows, const std::vector<int>& cols);

 private:
  RowSet rows_left() const;
  void fold(int target, const RowSet& rows);
  void emit_lone_rows(const RowSet& rows);
  void emit(int row, int q, const char* z_name);
};

}  // namespace zelt::braidwerk::internal
