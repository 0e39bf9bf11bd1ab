#pragma once

#include <tuple>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/pauli/pauli_table.h"

/// \file
/// Co-diagonalisation through a graph state, and the one entry to all methods of
/// co-diagonalisation. The table and its angles are rewritten by the circuit returned, after which
/// the table holds only I and Z.
///
/// Commuting rotations that span a full stabiliser group (as many independent ones as qubits) are
/// stabilisers of a graph state up to an H on some qubits: generators X on qubit i times Z on its
/// neighbours. A circuit that takes the graph state apart is then the basis change (M. Van den
/// Nest, J. Dehaene, B. De Moor, "Graphical description of the action of local Clifford
/// transformations on graph states", Physical Review A 69 (2004) 022316).
///
/// Methods: 0 is duncan_co_diag; 1 a graph state by naive_gs_synthesis, a CZ an edge; any other
/// value a graph state by graph_state_synthesis with one restart, which is random.

/// By the method given. A graph-state method that fails adds 1 to `failures` and leaves the work to
/// duncan_co_diag.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> generate_basis_change(
    PauliTable& table, std::vector<structures::Parameter>& params, int method, int& failures);

/// By a graph state: 1 for the naive synthesis, any other value for the decoding one. On failure
/// the table and the angles are as they were. Throws std::runtime_error
/// "Couldn't find a full rank set of rotations", or "Something went wrong during co diag process!"
/// where the table does not come out diagonal: its rows do not commute.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> graph_state_codiag(
    PauliTable& table, std::vector<structures::Parameter>& params, int method);

/// The graph, and the H gates in front of it. Throws std::runtime_error as above.
ZELTBRAIDWERK_EXPORT std::tuple<BoolMatrix, std::vector<structures::Gate>>
construct_adjacency_matrix(PauliTable& table);

/// (Z, X): the places of Z and Y, and of X and Y.
ZELTBRAIDWERK_EXPORT std::tuple<BoolMatrix, BoolMatrix> build_tables(PauliTable& table);

/// The width is that of row 0.
ZELTBRAIDWERK_EXPORT BoolMatrix transpose(BoolMatrix& matrix);

/// The rank over GF(2); the width is that of row 0.
ZELTBRAIDWERK_EXPORT int get_table_rank(BoolMatrix matrix);

/// Brings a to reduced row echelon form, b along by the same row operations. Returns the pivot
/// columns of a, ascending.
ZELTBRAIDWERK_EXPORT std::vector<int> diagonalize(BoolMatrix& a, BoolMatrix& b);
