#pragma once

#include "zeltbraidwerk/linear/greedy_ones.h"

/// \file
/// The greedy search that watches the matrix and its inverse at once: a row addition on the one is
/// a column addition on the other, and the cost is the number of ones in both. Circuits are shorter
/// than with the ones of the matrix alone, at about twice the time a step; with lookahead it is the
/// faster one, since the ones left are known without looking at the children.
///
/// The operation that goes with (i, j, row) is (j, i, not row) on B, which keeps B the inverse of
/// A. A must be invertible. All else is as for greedy_synthesis_ones.

namespace synthesis {

/// (score, path, A, B, R, C, Ri, Ci): a search state as plain values.
using InverseSearchState = std::tuple<int, std::vector<Operation>, BoolMatrix, BoolMatrix,
                                      std::vector<std::vector<int>>, std::vector<std::vector<int>>,
                                      std::vector<std::vector<int>>, std::vector<std::vector<int>>>;

/// As compute_available_operation_ones, with R, C the savings on A and Ri, Ci those on B. The cost
/// is the ones left in A and B; with lookahead, less the largest R[u][v] + C[v][u] of this call.
ZELTBRAIDWERK_EXPORT int compute_available_operation_ones_with_inv(
    int n, int width, int depth, const BoolMatrix& A, const BoolMatrix& B,
    const std::vector<std::vector<int>>& R, const std::vector<std::vector<int>>& C,
    const std::vector<std::vector<int>>& Ri, const std::vector<std::vector<int>>& Ci,
    std::vector<ScoredOperation>& out);

/// As compute_next_operation_ones.
ZELTBRAIDWERK_EXPORT Operation compute_next_operation_ones_with_inv(
    int n, int width, int depth, const BoolMatrix& A, const BoolMatrix& B,
    const std::vector<std::vector<int>>& R, const std::vector<std::vector<int>>& C,
    const std::vector<std::vector<int>>& Ri, const std::vector<std::vector<int>>& Ci);

/// As greedy_synthesis_ones.
ZELTBRAIDWERK_EXPORT structures::CnotCircuit greedy_synthesis_ones_with_inv(int n, BoolMatrix A,
                                                                            std::vector<int>& perm,
                                                                            int width, int depth);

}  // namespace synthesis
