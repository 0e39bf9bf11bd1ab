#pragma once

#include <optional>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
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

}  // namespace zelt::braidwerk::internal
