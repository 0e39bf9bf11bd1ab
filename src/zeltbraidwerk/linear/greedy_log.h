#pragma once

#include "zeltbraidwerk/linear/greedy_ones.h"

/// \file
/// The greedy search that lowers the potential of a matrix: the sum over its rows of the natural
/// logarithm of the row weight, 0 exactly when every row of an invertible matrix holds a single
/// one. It finishes rows rather than thinning all of them, which serves larger and sparse matrices.
///
/// Costs that differ by less than 1e-5 tie. A step costs O(n^3 / 16), with lookahead as much for
/// each of the 2 n (n - 1) children; as their scores are whole numbers, lookahead hides small gains
/// and seldom pays. A row without a one is outside the contract; it counts as a row of one. All
/// else is as for greedy_synthesis_ones.

namespace synthesis {

/// (cost, operation).
using LogScoredOperation = std::tuple<double, Operation>;

/// (score, path, matrix, row savings, column savings): a search state as plain values.
using LogSearchState =
    std::tuple<double, std::vector<Operation>, BoolMatrix, std::vector<std::vector<double>>,
               std::vector<std::vector<double>>>;

/// R[i][j] becomes the drop in potential by the row operation (i, j), C[i][j] that by the column
/// operation: the potential less the logarithms of the new rows, one at a time from row 0 on. The
/// diagonals hold -n log n. R and C are n by n; A is as it was on return.
ZELTBRAIDWERK_EXPORT void create_cost_matrix_log(int n, BoolMatrix& A,
                                                 std::vector<std::vector<double>>& R,
                                                 std::vector<std::vector<double>>& C);

/// create_cost_matrix_log on A; the operation is not used.
ZELTBRAIDWERK_EXPORT void update_cost_matrix_log(int n, int i, int j, bool row, BoolMatrix& A,
                                                 std::vector<std::vector<double>>& R,
                                                 std::vector<std::vector<double>>& C);

/// As compute_available_operation_ones. With depth 1 the cost is the potential left. With lookahead
/// it is the potential at the end of the path less the best saving there, each cut toward zero to a
/// whole number.
ZELTBRAIDWERK_EXPORT int compute_available_operation_log(int n, int width, int depth,
                                                         const BoolMatrix& A,
                                                         const std::vector<std::vector<double>>& R,
                                                         const std::vector<std::vector<double>>& C,
                                                         std::vector<LogScoredOperation>& out);

/// As compute_next_operation_ones, drawn among the candidates that cost less than 1e-5 more than
/// the best one, in the order of cost, i, j, column before row.
ZELTBRAIDWERK_EXPORT Operation compute_next_operation_log(
    int n, int width, int depth, const BoolMatrix& A, const std::vector<std::vector<double>>& R,
    const std::vector<std::vector<double>>& C);

/// As greedy_synthesis_ones.
ZELTBRAIDWERK_EXPORT structures::CnotCircuit greedy_synthesis_log(int n, BoolMatrix A,
                                                                  std::vector<int>& perm, int width,
                                                                  int depth);

}  // namespace synthesis
