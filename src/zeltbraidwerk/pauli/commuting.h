#pragma once

#include <utility>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/pauli/pauli_table.h"

/// \file
/// Groups of rotations that commute pairwise, by colouring the graph that joins those that do not.
///
/// The colourings take a graph on n vertices as n * n bits, i and j joined when bit i * n + j is
/// set. They visit the vertices in an order of their own, give each the smallest colour that none
/// of its neighbours has, and return a list of vertices a colour, ascending.

/// Vertices by falling number of neighbours with a lower number, of equal ones the lower first
/// (after D. J. A. Welsh, M. B. Powell, "An upper bound for the chromatic number of a graph and its
/// application to timetabling problems", The Computer Journal 10 (1967) 85, who order by the full
/// degree). O(n^2).
ZELTBRAIDWERK_EXPORT std::vector<std::vector<int>> coloration_lf(BoolRow& graph, unsigned long n);

/// Each time the vertex with the most neighbours among those not yet taken, of equal ones the
/// lowest. O(n^2).
ZELTBRAIDWERK_EXPORT std::vector<std::vector<int>> coloration_sl(BoolRow& graph, unsigned long n);

/// Whether the degree, the second element, of `a` is the greater.
ZELTBRAIDWERK_EXPORT bool cmp_degrees(const std::pair<int, int>& a, const std::pair<int, int>& b);

/// A pair (table, angles) a colour of coloration_lf on the graph of rows that do not commute. Rows
/// keep their order within a group; the arguments are not changed. The graph itself is never held:
/// O(rows^2 * qubits / 64) time, and no memory beyond the packed table.
ZELTBRAIDWERK_EXPORT std::vector<std::pair<PauliTable, std::vector<structures::Parameter>>>
split_commuting(PauliTable& table, std::vector<structures::Parameter>& params);
