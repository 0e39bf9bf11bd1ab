#pragma once

#include <set>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/table.h"
#include "zeltbraidwerk/graphs/graph.h"
#include "zeltbraidwerk/phase/phase_polynomial.h"

/// CNOT and PH circuit of a phase polynomial, each CNOT on an edge of the graph. Picks a qubit that
/// can leave the graph without cutting it in two, serves the parities without it first, then drives
/// the others towards weight one by CNOTs with its neighbours.
///
/// A. Meijer-van de Griend, R. Duncan, "Architecture-aware synthesis of phase polynomials for NISQ
/// devices", EPTCS 394 (2023) 116.
///
/// `table` is overwritten by the linear map of the circuit; it is the identity for an empty
/// polynomial. The graph needs no path table. Throws std::invalid_argument for a key that is not
/// graph.n long, for the zero parity, and when a parity reaches over parts of the graph that no
/// edge joins.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> gray_synth_on_graph(const PhasePolynomial& poly,
                                                                       structures::Graph& graph,
                                                                       structures::Table& table);

/// Serves the columns within the rows, a set of vertices that hangs together. Ends without effect
/// when no row can leave. Afterwards `cols` holds the columns that had a 0 on every row that left.
/// `table`, `params` and `circuit` as in the step functions of gray_synth.h.
ZELTBRAIDWERK_EXPORT void base_recursion_step_graph(std::set<int>& cols, std::set<int>& rows,
                                                    const structures::Graph& graph,
                                                    std::vector<structures::Gate>& circuit,
                                                    BoolMatrix& table,
                                                    std::vector<structures::Parameter>& params);

/// Serves columns with a 1 on row `target`, which is one of the rows. Where the target has no
/// neighbour among the rows, columns that keep their 1 there are left unserved.
ZELTBRAIDWERK_EXPORT void ones_recursion_step_graph(std::set<int>& cols, std::set<int>& rows,
                                                    int target, const structures::Graph& graph,
                                                    std::vector<structures::Gate>& circuit,
                                                    BoolMatrix& table,
                                                    std::vector<structures::Parameter>& params);
