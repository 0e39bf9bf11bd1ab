#pragma once

#include <tuple>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/cnot_circuit.h"

/// \file
/// CNOT circuits by a beam search over row and column additions that lowers the number of ones.
///
/// An invertible matrix is reduced to a permutation, one addition at a time, from both ends of the
/// circuit at once. The permutation is not realised by gates but handed back. After T. Goubault de
/// Brugiere, M. Baboulin, B. Valiron, S. Martiel, C. Allouche, "Gaussian elimination versus greedy
/// methods for the synthesis of linear reversible circuits", ACM Trans. Quantum Comput. 2 (2021).
///
/// Direction, for all searches of this family: with M the matrix that Simulate() gives for the
/// returned circuit, row perm[r] of M is row r of the input. Output r of the wanted operation comes
/// out on wire perm[r].
///
/// `width` is the number of children kept of every search state, at least 1. `depth` is the
/// lookahead: with 1 only single additions are looked at, `width` is not used and a step costs
/// O(n^2 / 16). With more, up to width^(depth - 2) states are expanded at the last level; each has
/// 2 n (n - 1) children, scored where they stand in O(n^2 / 64) or less. Memory holds the kept
/// states and never their children. n may be up to 16383.
///
/// Nothing is validated. A search ends after 1000 additions at the latest and then returns the
/// partial circuit, as it does on a singular matrix that it cannot reduce further. Where nothing
/// lowers the cost it goes on all the same and may run in circles: random matrices are finished up
/// to about 32 qubits by the number of ones, and 50 by greedy_synthesis_log. Draws come from
/// random::uniform, one an addition.

namespace synthesis {

/// (i, j, row): row i is added to row j, or, with `row` false, column i to column j.
using Operation = std::tuple<int, int, bool>;

/// (cost, operation); the lower cost is the better one.
using ScoredOperation = std::tuple<int, Operation>;

/// (score, path, matrix, row savings, column savings): a search state as plain values.
using SearchState = std::tuple<int, std::vector<Operation>, BoolMatrix,
                               std::vector<std::vector<int>>, std::vector<std::vector<int>>>;

/// R[i][j] becomes the saving of the row operation (i, j), C[i][j] that of the column operation:
/// ones before minus ones after. The diagonals hold -2n. R and C are n by n. Cost O(n^3 / 64).
ZELTBRAIDWERK_EXPORT void create_cost_matrix_ones(int n, const BoolMatrix& A,
                                                  std::vector<std::vector<int>>& R,
                                                  std::vector<std::vector<int>>& C);

/// Takes R and C from before the operation to after it; A is the matrix after it.
ZELTBRAIDWERK_EXPORT void update_cost_matrix_ones(int n, int i, int j, bool row,
                                                  const BoolMatrix& A,
                                                  std::vector<std::vector<int>>& R,
                                                  std::vector<std::vector<int>>& C);

/// Writes the candidates for the next operation to the front of `out`, which grows if it must, and
/// returns their number. With depth 1 these are all operations, i before j, row before column, with
/// the ones they leave. With lookahead they are the states of the last level, in beam order, each
/// as the first operation of its path with the ones left at its end less the best saving there; or,
/// as soon as a path reduces the matrix, only its first operation, at cost 0.
ZELTBRAIDWERK_EXPORT int compute_available_operation_ones(int n, int width, int depth,
                                                          const BoolMatrix& A,
                                                          const std::vector<std::vector<int>>& R,
                                                          const std::vector<std::vector<int>>& C,
                                                          std::vector<ScoredOperation>& out);

/// One of the candidates of lowest cost, by one draw among them in the order i, j, column before
/// row; a path counts as often as it was kept. (-1, -1, false), without a draw, when there is none.
ZELTBRAIDWERK_EXPORT Operation compute_next_operation_ones(int n, int width, int depth,
                                                           const BoolMatrix& A,
                                                           const std::vector<std::vector<int>>& R,
                                                           const std::vector<std::vector<int>>& C);

/// The whole search. perm has at least n entries; a row without a one leaves its entry as it was.
ZELTBRAIDWERK_EXPORT structures::CnotCircuit greedy_synthesis_ones(int n, BoolMatrix A,
                                                                   std::vector<int>& perm,
                                                                   int width, int depth);

/// The circuit of the column operations followed by that of the row operations, the last found
/// first, on wires relabelled by perm. An operation (i, j, true) stands as CNOT(i, j) in the row
/// circuit, (i, j, false) as CNOT(j, i) in the column circuit.
ZELTBRAIDWERK_EXPORT structures::CnotCircuit conversion(structures::CnotCircuit row_circuit,
                                                        structures::CnotCircuit column_circuit,
                                                        const std::vector<int>& perm);

}  // namespace synthesis
