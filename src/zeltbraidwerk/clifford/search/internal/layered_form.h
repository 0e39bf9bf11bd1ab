#pragma once

#include "zeltbraidwerk/clifford/search/internal/operator_rows.h"
#include "zeltbraidwerk/clifford/search/internal/window_symmetries.h"
#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// A circuit of few layers for an operator on many qubits: gates between X on pairs of qubits,
/// which commute, then a linear map by CNOTs, then gates between Z on pairs, which commute as well,
/// X and Z any two labels of a wire, drawn for the inputs. Every operator has such a form.
///
/// On n qubits the layers are about n / 2 before the map and as many after it, edge by edge; or
/// n / 3 by blocks, a beam for the edges between two halves of the wires, with CNOTs within the
/// halves, which go into the map. And those of the map, which is searched by depth with this
/// effort. More gates than by a reduction.
enum class GraphsBy { edges, blocks };
GateList layered_list(OperatorRows rows, GraphsBy way, Outputs outputs, Rng& rng,
                      const Effort& effort);

}  // namespace zelt::braidwerk::internal
