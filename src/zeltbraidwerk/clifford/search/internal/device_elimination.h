#pragma once

#include <optional>

#include "zeltbraidwerk/clifford/search/internal/operator_rows.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A circuit for an operator on the edges of a connected graph by a beam search: level by level one
/// wire that does not cut the rest in two is cleared, and leaves. Two rows of the wire are brought
/// down to it along Steiner trees, both of one side of the operator or one of each. A state is as
/// good as its gates are few and the rows left are light and close together.
///
/// Nothing when the effort was spent before.
std::optional<GateList> eliminate_on_device(const OperatorRows& rows, const BitGraph& graph,
                                            int width, Rng& rng, Meter& meter);

}  // namespace zelt::braidwerk::internal
