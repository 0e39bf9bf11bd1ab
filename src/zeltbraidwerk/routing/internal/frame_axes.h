#pragma once

#include <span>
#include <vector>

#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/graphs/internal/tree_routines.h"

namespace zelt::braidwerk::internal {

/// The gate that turns a letter into Z: "RX" by pi/2 for Y, "H" for X.
struct BasisChange {
  int qubit;
  bool is_y;
};

/// The axes of the waiting rotations, kept as they stand after the gates emitted: each gate
/// rewrites all of them. Copying copies words.
class FrameAxes {
 public:
  explicit FrameAxes(PauliFrame frame) : frame_(std::move(frame)) {}

  int qubits() const { return frame_.qubits(); }

  /// Readies all rows for the queries below, until the next gate.
  void read(const std::vector<int>& rows);
  const Word* support(int row) const { return supports_.row(row - base_); }
  bool is_y(int row, int q) const { return has_x(row, q) && frame_.z_planes().get(q, row - base_); }
  bool has_x(int row, int q) const { return frame_.x_planes().get(q, row - base_); }
  bool is_negative(int row) const { return frame_.is_negative(row - base_); }

  void apply(const std::vector<BasisChange>& changes);
  void apply(std::span<const Cnot> cnots);
  void apply(const std::vector<structures::Gate>& gates);

  /// A copy of the rows first to last - 1, under their old numbers.
  FrameAxes window(int first, int last) const;

 private:
  PauliFrame frame_;
  BitMatrix supports_;  ///< one row per rotation
  int base_ = 0;        ///< number of the first row, a multiple of the word size
};

}  // namespace zelt::braidwerk::internal
