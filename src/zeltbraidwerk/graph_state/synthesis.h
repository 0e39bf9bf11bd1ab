#pragma once

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/graph_state/graph_state.h"

/// A circuit that solves the leading n by n block of a graph, with fewer gates than one a one of
/// the matrix. By induction over the qubits: a circuit for the first ones is extended to the next
/// by groups of gates inserted anywhere (parities.h), chosen by syndrome decoding (syndrome.h).
///
/// The gates are appended to `circuit`, which comes in empty. `tries` is the number of random
/// restarts of each decoding: more of them shorten each step, or leave it as it is, at a price in
/// time; with none the circuit is a function of the graph. O(n * tries * candidates * n^2 / 64),
/// the candidates growing up to O(n^3).
///
/// Follows T. Goubault de Brugière, S. Martiel, C. Vuillot, "A graph-state based synthesis
/// framework for Clifford isometries", arXiv:2212.06928 (2022).
ZELTBRAIDWERK_EXPORT void graph_state_synthesis(BoolMatrix graph, TripleCircuit& circuit, int n,
                                                int tries);
