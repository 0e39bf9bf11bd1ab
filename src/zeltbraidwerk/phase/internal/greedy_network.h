#pragma once

#include <optional>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/phase/internal/phase_circuit.h"

namespace zelt::braidwerk::internal {

/// A phase circuit that always works on one of the lightest parities left: of the CNOTs that take a
/// wire out of it, the one that helps all parities most, where a parity of weight w counts
/// decay^w (0 < decay < 1). Equal ones are drawn. `parities` has no zero column. Nothing when
/// stopped.
ZELTBRAIDWERK_KERNEL_EXPORT std::optional<std::vector<PhaseStep>> greedy_network(
    BitMatrix parities, double decay, const Draw& draw, const Control& control);

}  // namespace zelt::braidwerk::internal
