#pragma once

#include <optional>
#include <vector>

#include "zeltbraidwerk/circuit/three_wire/internal/cosine_sine.h"
#include "zeltbraidwerk/circuit/two_wire/internal/place_gate.h"
#include "zeltbraidwerk/foundations/gate.h"

namespace zelt::braidwerk::internal {

/// Gates on wires 0, 1 and 2 in time order. exp(i phase) times the product of their matrices is the
/// operator asked for.
struct ThreeWireCircuit {
  std::vector<structures::Gate> gates;
  double phase = 0;
};

/// CNOTs that are enough for any operator of three qubits.
inline constexpr int most_cnots_of_three = 19;

/// The 8x8 matrix of gates that place_gate() reads, phases as there. The state |q0 q1 q2> has index
/// 4 q0 + 2 q1 + q2.
Matrix8cd operator_of(const std::vector<structures::Gate>& gates);

/// A circuit of at most most_cnots_of_three CNOTs for a unitary matrix, if that has fewer two-wire
/// gates than a known one (and, with `keep_rotations`, no more rotations). Each wire is tried as
/// the one that selects; windows on two wires are replaced in what comes out. The circuit is
/// multiplied out, and nothing comes back where it is not right to most_error.
///
/// The operator is taken apart into two operators of two wires that wire 0 selects, with one
/// between them in the basis of X: A. De Vos, S. De Baerdemacker, Physical Review A 94 (2016)
/// 052317. Each of these takes two operators of two wires and a rotation of wire 0, whose outer
/// CNOTs are taken into the middle. All but the last of the operators on two wires leave a diagonal
/// one to the next, and take two CNOTs: A. M. Krol, Z. Al-Ars, Physical Review Applied 22 (2024)
/// 034019.
std::optional<ThreeWireCircuit> three_wire_circuit(const Matrix8cd& unitary,
                                                   const GateCounts& known, bool keep_rotations);

}  // namespace zelt::braidwerk::internal
