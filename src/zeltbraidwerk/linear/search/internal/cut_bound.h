#pragma once

#include <functional>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/linear/search/internal/device_rewriter.h"
#include "zeltbraidwerk/search/internal/effort.h"

namespace zelt::braidwerk::internal {

/// A division of the wires in two parts.
struct Cut {
  VertexSet side;         ///< one of the parts
  int most_in_layer = 0;  ///< no layer has more gates that are on wires of both parts
};

/// Divisions of the same wires.
struct Cuts {
  std::vector<Cut> cuts;
  int load = 1;  ///< a gate is on both parts of at most so many of them
};

/// Where gates may be on any two wires: one cut for every k from 1 to 2^b - 1, where wires are
/// numbered from 0 to n - 1 below 2^b. A wire is in `side` when its number and k have an odd number
/// of bits in common. Any two wires are in different parts for 2^b / 2 values of k.
Cuts cuts_of_all_pairs(int n);

/// Where gates are on edges of a connected graph. First all wires that are nearer to one end of an
/// edge than to the other, for every edge: on a line, a grid or a hexagonal lattice each edge is in
/// one of these cuts. Then wires by their distance from one wire, which an edge changes by at most
/// 1, for some of the wires that are farthest from others.
std::vector<Cuts> cuts_of_graph(const BitGraph& graph, const Distances& distances);

/// The bound from cuts that each want a number of gates across. A gate is counted in at most
/// `load` of the cuts, so a circuit has at least their sum over the load; a cut alone wants as many
/// layers as its gates take.
LowerBound bound_of_cuts(const Cuts& cuts, const std::function<int(const VertexSet&)>& across);

/// The gates across a cut (A, B) that the CNOT circuits of a matrix take, outputs in their places:
/// the rank of the part of the matrix with rows of A and columns of B, and that with rows of B and
/// columns of A. For a CNOT from A to B adds one row to another and so changes the rank of the
/// second by at most 1 and nothing of the first; within A or B it adds rows or columns within the
/// part, and both ranks stay. They are 0 at the beginning.
int gates_across(const BitMatrix& m, const VertexSet& side);

constexpr int most_cut_wires = 256;  ///< on more, cuts would take seconds

}  // namespace zelt::braidwerk::internal
