#pragma once

#include <optional>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A circuit on a device by elimination of rows and columns, without a search. With `free` an
/// output may end on any wire.
GateList cleared_on_device(const BitMatrix& m, const BitGraph& device, bool free, const Draw& draw);

/// Steiner-Gauss elimination along a path through all vertices, where one is found in no more
/// operations than that.
std::optional<GateList> cleared_along_path(const BitMatrix& m, const BitGraph& device,
                                           int operations, const Draw& draw);

/// Such a path; empty: none was found.
std::vector<int> path_through(const BitGraph& device, int operations);

/// A circuit by sorting planes along a path, in a beam, of a map or of its inverse. Nothing when
/// the effort ended.
std::optional<GateList> sorted_by_planes(const BitMatrix& m, bool inverted,
                                         const std::vector<int>& path, int width, Rng& rng,
                                         Meter& meter);

/// The shallowest of some circuits by sorting rows along such a path.
std::optional<GateList> sorted_along_path(const BitMatrix& m, const BitGraph& device,
                                          int operations, const Control& control);

}  // namespace zelt::braidwerk::internal
