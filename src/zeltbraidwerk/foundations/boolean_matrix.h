#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"

/// \file
/// Dense matrices over GF(2): the two elementary operations, product, inverse, invertibility, a
/// pivoting LU factorisation and three small numeric helpers.
///
/// A matrix is a linear reversible operator on n qubits in the basis of parities: row r lists the
/// inputs whose XOR stands on qubit r at the output. The identity is the empty circuit. There is no
/// stored size: every function takes it as an argument and looks at nothing beyond it.
///
/// In every operation the first index is the source and the second the destination, as in
/// CNOT(control, target): RowOperation(m, i, j, n) is the effect on the operator of appending
/// CNOT(i, j) at the end of a circuit.
///
/// Sizes and indices are the caller's to get right; nothing here validates them. A size below 1
/// makes every loop empty.

using BoolRow = std::vector<bool>;        ///< a row, or any list of bits
using BoolMatrix = std::vector<BoolRow>;  ///< rows of equal length

/// Row j becomes row j XOR row i, on columns 0 to n-1. With i equal to j the row is cleared.
ZELTBRAIDWERK_EXPORT void RowOperation(BoolMatrix& m, int i, int j, int n);

/// Column j becomes column j XOR column i, on rows 0 to n-1.
ZELTBRAIDWERK_EXPORT void ColumnOperation(BoolMatrix& m, int i, int j, int n);

/// RowOperation on columns i to n-1 alone; equal to it where row i is zero left of column i.
/// Nothing happens when i is not below n.
ZELTBRAIDWERK_EXPORT void RowOperation_upper(BoolMatrix& m, int i, int j, int n);

/// The number of ones that RowOperation(m, i, j, n) would remove; negative when it adds ones.
ZELTBRAIDWERK_EXPORT int SavingRowOperation(const BoolMatrix& m, int i, int j, int n);

/// The number of ones that ColumnOperation(m, i, j, n) would remove; negative when it adds ones.
ZELTBRAIDWERK_EXPORT int SavingColumnOperation(const BoolMatrix& m, int i, int j, int n);

/// The product a times b: `rows` rows of `cols` entries, `inner` the shared size.
/// Cost O(rows * inner * cols / 64).
ZELTBRAIDWERK_EXPORT BoolMatrix boolean_matrix_product(int rows, int cols, int inner,
                                                       const BoolMatrix& a, const BoolMatrix& b);

/// The inverse of the leading n by n block, by Gauss-Jordan elimination, O(n^3 / 64).
/// A singular block gives a matrix that is no inverse; boolean_matrix_det tells beforehand.
ZELTBRAIDWERK_EXPORT BoolMatrix boolean_matrix_inverse(int n, BoolMatrix m);

/// 1 when the leading n by n block is invertible, else 0; 1 for n below 1. O(n^3 / 64).
/// The matrix comes first here, unlike in boolean_matrix_inverse.
ZELTBRAIDWERK_EXPORT int boolean_matrix_det(BoolMatrix m, int n);

/// LU factorisation with pivots chosen for sparsity: each step takes the position (r, c) with the
/// fewest ones left in its row and column, of equal ones the first in row order.
///
/// With p = rows, q = cols and R the result, the matrix P with P[t][s] = m[p[t]][q[s]] equals
/// L times U, where L[t][s] = R[p[t]][q[s]] for t above s (unit diagonal) and U[s][t] =
/// R[p[s]][q[t]] for s not above t. `rows` and `cols` are written by index and must hold n entries.
/// The block must be invertible; on a singular one the factorisation ends at the first step without
/// a pivot, and the rest of `rows` and `cols` stays as it was.
ZELTBRAIDWERK_EXPORT BoolMatrix LU(BoolMatrix m, int n, std::vector<int>& rows,
                                   std::vector<int>& cols);

/// Number of ones in the leading n by n block.
ZELTBRAIDWERK_EXPORT int count_bits(int n, const BoolMatrix& m);

/// Largest value in the leading n by n block; m[0][0] for n below 1, and 0 when m is empty.
ZELTBRAIDWERK_EXPORT int findmax(int n, const std::vector<std::vector<int>>& m);

/// The same over doubles, the maximum then cut toward zero: 2.9 gives 2, -2.9 gives -2.
ZELTBRAIDWERK_EXPORT int findmax_double(int n, const std::vector<std::vector<double>>& m);

/// base to the power exponent (at least 0) by halving, in wrapping 32-bit arithmetic.
/// A negative exponent gives 1.
ZELTBRAIDWERK_EXPORT int myPow(int base, int exponent);

/// Writes the leading n by n block to standard output: entries as 1 or 0 with one blank after each,
/// one line per row, and an empty line after the last.
ZELTBRAIDWERK_EXPORT void pretty_print(int n, const BoolMatrix& m);
