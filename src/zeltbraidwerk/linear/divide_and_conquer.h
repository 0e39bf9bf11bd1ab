#pragma once

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/cnot_circuit.h"

/// \file
/// Shallow CNOT circuits by block recursion. The matrix is cut into four blocks, with h = n / 2 and
/// r = n - h; the two off-diagonal blocks are cleared by layers of CNOTs on disjoint qubits, each
/// chosen by a maximum-weight matching; the two diagonal blocks share no qubit and are solved in
/// the same way. T. Goubault de Brugiere, M. Baboulin, B. Valiron, S. Martiel, C. Allouche,
/// "Reducing the depth of linear reversible quantum circuits", IEEE Transactions on Quantum
/// Engineering 2 (2021) 3102422.
///
/// Choose it for depth, from a dozen qubits on; for the number of CNOTs the greedy searches are
/// better.
///
/// m must be invertible, which nothing checks; on a singular one all functions end, with a circuit
/// that does not reduce it. `perm` holds a label for each row: the qubit on which row i of the
/// working matrix stands. Gates are emitted on labels.

/// CNOT circuit of an invertible matrix. Direction as for GaussianElimination: the circuit
/// implements the inverse of m. The gates stand in the order of emission, layers are not merged.
ZELTBRAIDWERK_EXPORT structures::CnotCircuit divide_and_conquer_synthesis(int n,
                                                                          const BoolMatrix& m);

/// The same without the swaps at the end: they stay in `perm`, n labels which are updated, and
/// addPermutation appends them.
ZELTBRAIDWERK_EXPORT structures::CnotCircuit divide_and_conquer_synthesis_with_permutation(
    int n, BoolMatrix m, int* perm);

/// Swaps rows of m, and their labels, so that its leading blocks up to n / 2 become invertible.
ZELTBRAIDWERK_EXPORT void setup(int n, BoolMatrix& m, int* perm);

/// Appends swaps of three CNOTs each that realise the permutation: taken alone, they have the
/// matrix whose row i has its one in column perm[i]. At most two layers of swaps a cycle.
ZELTBRAIDWERK_EXPORT void addPermutation(int n, structures::CnotCircuit& c, const int* perm);

/// Clears the lower left block of m. X is the quotient of that block by the upper left one, r rows
/// by h columns; it is driven to zero, m follows and the gates are appended to c.
ZELTBRAIDWERK_EXPORT void SynthesizeWestSouthBlock(BoolMatrix& X, BoolMatrix& m,
                                                   structures::CnotCircuit& c, int n, int h, int r,
                                                   int* perm);

/// Clears the upper right block of m. Y is the quotient of that block by the lower right one, h
/// rows by r columns.
ZELTBRAIDWERK_EXPORT void SynthesizeEastNorthBlock(BoolMatrix& Y, BoolMatrix& m,
                                                   structures::CnotCircuit& c, int n, int h, int r,
                                                   int* perm);
