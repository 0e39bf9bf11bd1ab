#pragma once

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/linear/internal/facing.h"
#include "zeltbraidwerk/linear/search/internal/reduction.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A circuit of m by a beam of additions of rows and of columns, on one of the facings of m;
/// without gates when it found none.
GateList reduce(const BitMatrix& m, const ReductionCost& cost, int width, Facing facing, Rng& rng,
                Meter& meter);

/// The same by additions of columns alone.
GateList reduce_by_columns(const BitMatrix& m, int width, Facing facing, Rng& rng, Meter& meter);

}  // namespace zelt::braidwerk::internal
