#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/cnot_circuit.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/linear/internal/beam.h"

namespace zelt::braidwerk::internal {

/// What a greedy search lowers.
enum class GreedyCost {
  Ones,             ///< the ones of the matrix
  OnesWithInverse,  ///< the ones of the matrix and of its inverse
  OnesWithEscape,   ///< the ones; where nothing lowers them, the inverse is synthesised instead
  Log,              ///< the sum of the logarithms of the row weights
};

struct GreedyOptions {
  GreedyCost cost = GreedyCost::Ones;
  Beam beam;
  int level = 0;                  ///< escapes taken so far; at 20 there are no more
  bool announce_escapes = false;  ///< a line on standard output for each escape
};

struct GreedyResult {
  structures::CnotCircuit circuit;
  bool reduced = false;  ///< false when the cap, a stop, or a dead end left the search unfinished
};

/// Reduces a matrix to a permutation by row and column additions, each the best by the cost after
/// a lookahead, ties drawn, and makes a circuit of them: row perm[r] of its matrix is row r of `a`.
/// `perm` has an entry for each row; a row without a one leaves its entry as it was.
///
/// The search can run in circles, so control.max_operations must stay finite; it counts anew in
/// every escape. Progress is reported once an addition, but not from within an escape.
GreedyResult greedy_synthesis(const BitMatrix& a, std::vector<int>& perm,
                              const GreedyOptions& options, const Draw& draw,
                              const Control& control);

/// The circuit of column additions followed by that of row additions, last found first, on wires
/// relabelled by `perm`.
structures::CnotCircuit join(structures::CnotCircuit rows, structures::CnotCircuit columns,
                             const std::vector<int>& perm);

}  // namespace zelt::braidwerk::internal
