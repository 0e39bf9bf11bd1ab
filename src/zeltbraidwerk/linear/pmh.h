#pragma once

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/cnot_circuit.h"

namespace synthesis {

/// CNOT circuit of an invertible matrix by sectioned elimination: rows that agree on a section of
/// `section` columns are cleared against each other first, which costs O(n^2 / log n) gates for
/// sections of about log2(n) / 2 columns.
///
/// K. N. Patel, I. L. Markov, J. P. Hayes, "Optimal synthesis of linear reversible circuits",
/// Quantum Information and Computation 8 (2008) 282. The second half does not transpose here: it
/// works on rows again, from the last column backward.
///
/// Direction as for GaussianElimination: the circuit implements the inverse of m, which is not
/// checked. A section below 1 counts as 1, one wider than the matrix as its width; a matrix of 31
/// columns or more throws std::length_error on a section of more than 30. Cost O(n^3 / 64).
ZELTBRAIDWERK_EXPORT structures::CnotCircuit PMH_Algorithm(int n, BoolMatrix m, int section);

/// The shortest PMH_Algorithm circuit over the sections 1 to floor(log2(n)), the smaller section of
/// equal ones. For n below 2 the default circuit: one qubit, no gates.
ZELTBRAIDWERK_EXPORT structures::CnotCircuit optimized_PMH_Algorithm(int n, const BoolMatrix& m);

}  // namespace synthesis
