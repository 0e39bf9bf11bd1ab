#pragma once

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/cnot_circuit.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"

namespace zelt::braidwerk::internal {

/// GaussianElimination, PMH_Algorithm and optimized_PMH_Algorithm on a packed square matrix.

ZELTBRAIDWERK_KERNEL_EXPORT structures::CnotCircuit eliminate_gauss(BitMatrix m);

ZELTBRAIDWERK_KERNEL_EXPORT structures::CnotCircuit pmh(BitMatrix m, int section);

/// One copy of m at a time beside m itself.
ZELTBRAIDWERK_KERNEL_EXPORT structures::CnotCircuit optimized_pmh(const BitMatrix& m);

}  // namespace zelt::braidwerk::internal
