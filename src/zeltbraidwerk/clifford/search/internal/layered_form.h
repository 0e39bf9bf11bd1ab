#pragma once

#include "zeltbraidwerk/clifford/search/internal/operator_rows.h"
#include "zeltbraidwerk/clifford/search/internal/window_symmetries.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// How the commuting gates before and after the map of a layered form, a graph each, are made: edge
/// by edge, in about n / 2 layers on n qubits; or by blocks, in about n / 3, with a beam for the
/// edges between two halves of the wires and CNOTs within the halves, which go into the map. Sparse
/// graphs take fewer layers edge by edge.
enum class GraphsBy { edges, blocks };

/// A circuit of few layers for an operator on many qubits: gates between X on pairs of qubits,
/// which commute, then a linear map by CNOTs, then gates between Z on pairs, which commute as well,
/// X and Z any two labels of a wire, drawn for the inputs. Every operator has such a form.
///
/// The layers are those of both graphs and of the map, which is searched by depth with this effort.
/// More gates than by a reduction.
GateList layered_list(OperatorRows rows, GraphsBy way, Outputs outputs, Rng& rng,
                      const Effort& effort);

/// The same with few gates, outputs in place, for operators on so many qubits that a reduction
/// takes long: graphs by sorting (graph_sorting.h), and the map by pairs (pair_elimination.h).
/// About 2 n^2 / log2(n) gates, in 0.6 s on 3000 qubits; where they could be few, a reduction has
/// fewer.
GateList layered_list_by_count(OperatorRows rows, Rng& rng);

}  // namespace zelt::braidwerk::internal
