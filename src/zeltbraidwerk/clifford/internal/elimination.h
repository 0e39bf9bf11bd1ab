#pragma once

#include <cstddef>
#include <limits>
#include <optional>
#include <vector>

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/foundations/operator_tableau.h"

namespace zelt::braidwerk::internal {

/// The images of X on qubits 0 to n-1, then those of Z, under the identity; carried through a
/// circuit, they are its tableau.
PauliFrame identity_images(int qubits);

/// The same under the operator of a tableau.
PauliFrame images_under(const structures::OperatorTableau& tableau);

/// What undoes a Clifford operator: after the gates, the images of X and Z on qubit q are X and Z
/// on wire wires[q].
struct Elimination {
  std::vector<CliffordGate> gates;
  std::vector<int> wires;

  /// Appends what brings every qubit back to its own wire, three CNOTs a swap.
  void close();
};

inline constexpr std::size_t no_limit = std::numeric_limits<std::size_t>::max();

/// Of the images that an operator has. With `in_place`, qubits are gathered on their own wires
/// where that takes no more CNOTs than a swap. Images of no operator end as well, not eliminated.
Elimination eliminate_clifford(PauliFrame images, bool in_place);

/// The same qubit after qubit, each on its own wire at the end, in O(n^3 / 64) instead of O(n^3):
/// for circuits that are wanted soon. Nothing where it takes more gates than `most`, before the
/// swaps at its end.
std::optional<Elimination> eliminate_in_order(PauliFrame images, std::size_t most = no_limit);

/// The inverse of a gate that the elimination knows, and of a circuit of them.
structures::Gate inverse_of(structures::Gate gate);
std::vector<structures::Gate> inverted(const std::vector<structures::Gate>& gates);

}  // namespace zelt::braidwerk::internal
