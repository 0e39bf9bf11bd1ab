#pragma once

#include "zeltbraidwerk/clifford/search/internal/window_symmetries.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// The circuit of a plain elimination, up to any images.
GateList eliminated_list(const PauliFrame& images, Outputs outputs);

/// One of the shortest circuits of an operator on two to four qubits.
GateList shortest_list(const PauliFrame& images, Outputs outputs, Rng& rng);

}  // namespace zelt::braidwerk::internal
