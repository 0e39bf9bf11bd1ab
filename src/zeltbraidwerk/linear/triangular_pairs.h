#pragma once

#include <tuple>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/cnot_circuit.h"

/// \file
/// Gaussian elimination that chooses which rows to add: the rows with a one in the pivot column are
/// matched in pairs that agree on as many of the following columns as possible, so that their sums
/// are sparse.
///
/// A pair (a, b) means: add row a to row b, CNOT(a, b). The functions named `upper` do for the
/// upper triangle, with rows and columns taken from the last backward, what those named `lower` do
/// for the lower one; in them "smaller" is "larger". m must be invertible; on a singular one all
/// functions end, and rows that never differ are paired with the first of them.

namespace synthesis {

/// CNOT circuit of an invertible matrix: the lower triangle is cleared column by column with the
/// pairs of get_pairs_lower, then the upper one. T. Goubault de Brugiere, M. Baboulin, B. Valiron,
/// S. Martiel, C. Allouche, "Gaussian elimination versus greedy methods for the synthesis of linear
/// reversible circuits", ACM Transactions on Quantum Computing 2 (2021) 11. The split finds the
/// pairs of a random matrix in O(n^2 log n), of any matrix in O(n^3); the additions cost
/// O(n^3 / 64) at worst.
///
/// Direction as for GaussianElimination: the gates reduce m to the identity, in order, so the
/// circuit implements the inverse of m. m is the identity on return.
ZELTBRAIDWERK_EXPORT structures::CnotCircuit GreedyGaussianElimination_faster(int n, BoolMatrix& m);

/// The pairs that clear column `col` below the diagonal: the rows from `col` on with a one there,
/// matched on the columns after it. The smallest of them stays unmatched and is not reported.
ZELTBRAIDWERK_EXPORT std::vector<std::tuple<int, int>> get_pairs_lower(int n, const BoolMatrix& m,
                                                                       int col);

/// The pairs that clear column n-1-k above the diagonal. The largest row stays unmatched.
ZELTBRAIDWERK_EXPORT std::vector<std::tuple<int, int>> get_pairs_upper(int n, const BoolMatrix& m,
                                                                       int k);

/// Splits `rows` by their entries in column `col`, matches both halves on the following columns,
/// the longer list of pairs first, and pairs what both leave unmatched, last. On return `rows`
/// holds the one row that is left, the smallest.
ZELTBRAIDWERK_EXPORT std::vector<std::tuple<int, int>> recursive_get_pairs_lower(
    int n, const BoolMatrix& m, int col, std::vector<int>& rows);

/// The same from column n-1-k backward.
ZELTBRAIDWERK_EXPORT std::vector<std::tuple<int, int>> recursive_get_pairs_upper(
    int n, const BoolMatrix& m, int k, std::vector<int>& rows);

/// One pair among the rows from `start` on: column by column, from `start`, those with a one are
/// kept when there are at least two, else those without, until two are left. The smaller row comes
/// first; (-1, -1) when there are no two rows to begin with.
ZELTBRAIDWERK_EXPORT std::tuple<int, int> choose_best_pair_trig_lower(int n, const BoolMatrix& m,
                                                                      int start);

/// The same among the rows from n-1-start down, the larger row first.
ZELTBRAIDWERK_EXPORT std::tuple<int, int> choose_best_pair_trig_upper(int n, const BoolMatrix& m,
                                                                      int start);

}  // namespace synthesis
