#pragma once

#include <vector>

#include "zeltbraidwerk/circuit/internal/steps.h"

namespace zelt::braidwerk::internal {

/// The same circuit up to a phase, with the same gates on two qubits but for their direction (and,
/// `with_cz`, for their kind: a CNOT or a CZ), the same rotations in the same order, and few other
/// gates on one qubit, never more than given.
///
/// Clifford gates on a wire wait: rotations and gates on two qubits pass them, and turn into others
/// about the images of their axes. A gate on two qubits that would not be a CNOT (or CZ) then has
/// gates put before it. Which ones, and which gates on two qubits take which form, is searched: on
/// each wire the best choice for all forms given is found exactly, and the forms are made better
/// one after the other, each against all others, until none gets better. Linear in size.
std::vector<Step> tidied(int qubits, const std::vector<Step>& steps, bool with_cz);

}  // namespace zelt::braidwerk::internal
