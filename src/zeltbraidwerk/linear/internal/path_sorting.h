#pragma once

#include <optional>
#include <vector>

#include "zeltbraidwerk/foundations/cnot_circuit.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {

/// A CNOT circuit that reduces an invertible matrix to the identity, on neighbours of a path
/// through all wires, in at most 5 n layers.
///
/// Two odd-even sorting networks, each of whose comparators also adds one of its two rows to the
/// other. The first one sorts the rows until that on place p of the path has its last one in column
/// n - 1 - p, in two layers per round; the second one turns their order round, in three. What is
/// added follows from the spans of the rows from each place on: of the three sums of two rows, one
/// is nearer to what is to stand below. S. A. Kutin, D. P. Moulton, L. M. Smithline, "Computation
/// at a distance", Chicago Journal of Theoretical Computer Science 2007, article 1.
///
/// `first` is the place of the first comparator, 0 or 1. Nothing when it was stopped.
/// O(n^4 / 64).
std::optional<structures::CnotCircuit> sort_along_path(const BitMatrix& m,
                                                       const std::vector<int>& path, int first,
                                                       const Control& control);

}  // namespace zelt::braidwerk::internal
