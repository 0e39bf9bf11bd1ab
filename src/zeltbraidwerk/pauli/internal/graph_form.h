#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"

namespace zelt::braidwerk::internal {

/// A stabiliser group as a graph state followed by H gates.
struct GraphForm {
  BitMatrix graph;
  std::vector<structures::Gate> gates;
};

/// The graph form of the rows. Throws std::runtime_error when they are not of full rank.
GraphForm graph_form_of(const PauliFrame& frame);

/// Rewrites the frame by the circuit returned. On a throw it is as it was.
std::vector<structures::Gate> diagonalise_by_graph_state(PauliFrame& frame, int method,
                                                         const Draw& draw);

/// By the method given, greedily where a graph-state method fails.
std::vector<structures::Gate> change_basis(PauliFrame& frame, int method, int& failures,
                                           const Draw& draw);

}  // namespace zelt::braidwerk::internal
