#pragma once

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/linear/internal/facing.h"

namespace zelt::braidwerk::internal {

/// CNOT circuit of an invertible matrix on the edges of a connected graph, without a Hamiltonian
/// path: a vertex that does not cut the rest in two is picked, its column and its row are cleared
/// along Steiner trees, and it leaves. Of all vertices the one that is cleared by the fewest CNOTs
/// goes first; equal ones are drawn.
///
/// With `free`, outputs may change places: the column is chosen with the vertex.
///
/// B. Wu, X. He, S. Yang, L. Shou, G. Tian, J. Zhang, X. Sun, "Optimization of CNOT circuits on
/// limited-connectivity architecture", Physical Review Research 5 (2023) 013065. Here the order is
/// found on the way.
///
/// `slack` blurs the costs by that many CNOTs at most, for restarts. Returns false when stopped.
struct RowColumnOptions {
  bool free = false;
  int slack = 0;
};
bool row_column_synthesis(const BitMatrix& m, const BitGraph& graph,
                          const RowColumnOptions& options, const Draw& draw, const Control& control,
                          FreeCircuit& found);

/// The same on one spanning tree, whose leaves leave in turn, each with its own column. One and a
/// half times as many gates, in O(n^3 / 64).
FreeCircuit cleared_along_tree(const BitMatrix& m, const BitGraph& graph);

}  // namespace zelt::braidwerk::internal
