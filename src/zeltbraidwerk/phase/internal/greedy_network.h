#pragma once

#include <optional>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/phase/internal/phase_circuit.h"

namespace zelt::braidwerk::internal {

struct GreedyNetworkOptions {
  double decay = 0.6;    ///< a parity on w wires counts decay^w; between 0 and 1
  double map_share = 0;  ///< what a one in the linear map, or in its inverse, counts against it
};

/// A phase circuit that always works on one of the lightest parities left: of the CNOTs that take a
/// wire out of it, the one that helps all parities most, less what it adds to the linear map that
/// is left. Equal ones are drawn. `parities` has no zero column. Nothing when stopped.
std::optional<std::vector<PhaseStep>> greedy_network(BitMatrix parities,
                                                     const GreedyNetworkOptions& options,
                                                     const Draw& draw, const Control& control);

}  // namespace zelt::braidwerk::internal
