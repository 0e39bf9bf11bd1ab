#pragma once

#include <optional>
#include <vector>

#include "zeltbraidwerk/circuit/two_wire/internal/two_wire.h"

namespace zelt::braidwerk::internal {

/// The same two-wire gates with the one-wire gates between them put together, if that makes them
/// fewer, or nothing.
std::optional<TwoWireCircuit> fused_block(const std::vector<PlaceGate>& block);

/// A better circuit for gates on two places, in time order, or nothing where there is none: fewer
/// two-wire gates (and, with `keep_rotations`, no more rotations); or as many of them, no more
/// rotations and no more one-wire gates, but fewer of either. The operator stays to most_error,
/// which is checked.
std::optional<TwoWireCircuit> better_block(const std::vector<PlaceGate>& block,
                                           bool keep_rotations);

}  // namespace zelt::braidwerk::internal
