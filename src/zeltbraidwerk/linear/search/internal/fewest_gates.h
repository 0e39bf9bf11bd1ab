#pragma once

#include <optional>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// No circuit of a map has fewer gates than `least`; where the search came to its end, this one has
/// as many.
struct FewestGates {
  int least = 0;
  std::optional<GateList> circuit;
};

/// Whether six or seven wires can be searched for the fewest gates, and the meter has the time.
bool finds_fewest_gates(int wires, bool permuted, const Meter& meter);

/// The fewest CNOTs of an invertible matrix on six or seven wires, with outputs in place or on any
/// wires (`permuted`), where the two ends meet: from the matrix, one of each class, breadth first,
/// until one is in MapClasses, from which gates lead down to none. Six wires with outputs anywhere
/// are all in there; of most others three gates lead there, in a tenth of a second. In place on
/// seven wires dense matrices take more than the ten gates that this finds.
FewestGates fewest_gates(const BitMatrix& m, bool permuted, Meter& meter);

}  // namespace zelt::braidwerk::internal
