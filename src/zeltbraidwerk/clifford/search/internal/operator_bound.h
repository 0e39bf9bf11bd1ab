#pragma once

#include "zeltbraidwerk/clifford/search/internal/operator_rows.h"
#include "zeltbraidwerk/clifford/search/internal/window_symmetries.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/search/internal/effort.h"

namespace zelt::braidwerk::internal {

/// What every circuit of an operator takes, counted in CNOTs; gates on one qubit are free.
///
/// Gates. A CNOT between two parts of the wires adds at most 1 to the rank, over GF(2), of what the
/// operator leads from one part to the other, and other gates change nothing. So the wire that
/// output i is on at the end, which began with some input q, meets at least as many gates as the
/// rank of the images of i on all qubits but q: 0, 1 or 2. Each gate meets two wires, so half the
/// sum over all outputs is needed, rounded up. With free outputs q is the input of least rank.
/// And letters of an image join its wires: a group of s joined wires takes s - 1 gates. With
/// outputs in place the rank from one part to the other is what the gates across are at least as
/// many as, for every cut (linear/search/internal/cut_bound.h): random operators take nearly 2
/// gates per wire.
///
/// Layers. A wire meets one gate per layer; an image spreads over at most 2^d wires in d layers,
/// forward and backward; one layer joins pairs alone; and a layer has at most n / 2 gates.
///
/// On a device, with outputs in place, what a label has on a wire came from as many edges away as
/// it is far, and the cuts of the graph bound both.
LowerBound bound_of_operator(const OperatorRows& rows, Outputs outputs, const BitGraph* device);

}  // namespace zelt::braidwerk::internal
