#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/table.h"
#include "zeltbraidwerk/graphs/descending_tree.h"
#include "zeltbraidwerk/graphs/graph.h"

namespace synthesis {

/// CNOT circuit of an invertible matrix on the edges of a device, by Gaussian elimination along
/// Steiner trees. The Hamiltonian path sets the order: down the path each column is cleared below
/// the diagonal along trees of what has not been passed yet, up the path above it along trees that
/// descend the path, so that no column spoils another.
///
/// A. Kissinger, A. Meijer-van de Griend, "CNOT circuit extraction for topologically-constrained
/// quantum memories", Quantum Information and Computation 20 (2020) 581.
///
/// Direction: the gates, applied to `table` in order by Table::cnot, give the identity; so the
/// circuit implements the inverse of `table`, and reversed it implements `table`. Gates are on
/// vertex numbers, each on an edge. `graph` is not changed and needs no path table; its sketch_mode
/// picks the tree builder of the way down.
///
/// Errors. std::runtime_error "Path is not hamiltonian". std::logic_error "ooops", with a line on
/// standard error, where a column has no 1 at or below the diagonal: the table is singular.
/// std::runtime_error "Aborting", with the table on standard error, when the result is not the
/// identity: a singular table, or sketches that no longer reach each other.
/// std::invalid_argument when the table's size is not that of the graph.
///
/// Cost O(n * (edges * terminals + gates * n / 64)). The path table is never held: trees are found
/// where they are looked at.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> steiner_gauss_ham_path(structures::Table table,
                                                                          structures::Graph& graph,
                                                                          std::vector<int>& path);

/// Ones on the diagonal and zeros below it. An empty table passes.
ZELTBRAIDWERK_EXPORT bool check_is_upper_triangular(const structures::Table& table);

/// First position of the value, or -1.
ZELTBRAIDWERK_EXPORT int inverse_index(const std::vector<int>& list, int value);

}  // namespace synthesis
