#pragma once

#include "zeltbraidwerk/foundations/cnot_circuit.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"

namespace zelt::braidwerk::internal {

/// GaussianElimination, PMH_Algorithm and optimized_PMH_Algorithm on a packed square matrix.

structures::CnotCircuit eliminate_gauss(BitMatrix m);

structures::CnotCircuit pmh(BitMatrix m, int section);

/// One copy of m at a time beside m itself.
structures::CnotCircuit optimized_pmh(const BitMatrix& m);

}  // namespace zelt::braidwerk::internal
