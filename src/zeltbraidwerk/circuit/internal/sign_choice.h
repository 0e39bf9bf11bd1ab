#pragma once

#include <cstddef>
#include <vector>

#include "zeltbraidwerk/circuit/internal/steps.h"

namespace zelt::braidwerk::internal {

/// Quarter turns may go the other way, which is a Pauli gate after them, and so Pauli gates at the
/// end of the circuit. Which of the steps at the places `turns` are to do so, for these gates to be
/// those of `wanted` on the bits of `mask`, where that can be: bits of X on qubit q at q, of Z at
/// q + the first multiple of 64 that is at least `qubits`.
std::vector<bool> sign_choice(int qubits, const std::vector<Step>& steps,
                              const std::vector<std::size_t>& turns, std::vector<Word> wanted,
                              const std::vector<Word>& mask);

}  // namespace zelt::braidwerk::internal
