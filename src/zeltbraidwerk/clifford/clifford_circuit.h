#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/operator_tableau.h"

namespace synthesis {

/// A circuit of "H", "RX" and "RZ" by multiples of pi/2, "X", "Z" and "CNOT" that acts on every
/// Pauli operator as the tableau does, signs included. At most O(n^2) CNOTs; O(n^3) time.
///
/// That the tableau is one of a Clifford operator is not checked: the circuit of another one acts
/// otherwise.
///
/// Greedy elimination of S. Bravyi, R. Shaydulin, S. Hu, D. Maslov, "Clifford circuit optimization
/// with templates and symbolic Pauli gates", Quantum 5 (2021) 580.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> clifford_circuit(
    const structures::OperatorTableau& tableau);

}  // namespace synthesis
