#pragma once

#include <map>

#include "zeltbraidwerk/foundations/boolean_matrix.h"
#include "zeltbraidwerk/foundations/parameter.h"

/// Parities, each with a rotation angle: the diagonal operator that adds the angle's phase where
/// the XOR of the qubits set in the key is 1. All keys are as long as there are qubits. Algorithms
/// read it in key order.
using PhasePolynomial = std::map<BoolRow, structures::Parameter>;
