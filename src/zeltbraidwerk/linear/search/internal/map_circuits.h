#pragma once

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/linear/internal/facing.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// The circuits of a linear map as the engine has them and as others do: output r comes out on wire
/// perm[r].
FreeCircuit free_circuit(const GateList& list);
GateList gate_list(const FreeCircuit& found);
/// Outputs in place.
GateList gate_list(const structures::CnotCircuit& circuit);

/// A draw of an integer in [low, high] from the engine's source. It must outlive the result.
Draw draw_from(Rng& rng);

/// Without gates, of a permutation of the inputs.
GateList relabelled(const BitMatrix& m);

/// A circuit of the elimination by pairs on a facing of a matrix, outputs in place.
GateList by_pairs(const BitMatrix& m, Facing facing);

/// A random one of the shortest circuits of a matrix of up to 5 rows.
GateList shortest_circuit(const BitMatrix& m, bool permuted, Rng& rng);

/// With every output on its own wire, by few gates more: see close_within_gates.
GateList closed_within_gates(const GateList& list, Rng& rng);

/// Whether wire w holds row output_on(w) of m after the gates, which are on edges of the device. A
/// null device joins all pairs.
bool implements(const GateList& list, const BitMatrix& m, const BitGraph* device = nullptr);

}  // namespace zelt::braidwerk::internal
