#pragma once

#include <optional>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A circuit on a device by elimination of rows and columns, without a search. With `free` an
/// output may end on any wire.
GateList cleared_on_device(const BitMatrix& m, const BitGraph& device, bool free, const Draw& draw);

/// Steiner-Gauss elimination along a path through all vertices, where one is found in no more
/// operations than that.
std::optional<GateList> cleared_along_path(const BitMatrix& m, const BitGraph& device,
                                           int operations, const Draw& draw);

/// The shallowest of some circuits by sorting along such a path.
std::optional<GateList> sorted_along_path(const BitMatrix& m, const BitGraph& device,
                                          int operations, const Control& control);

}  // namespace zelt::braidwerk::internal
