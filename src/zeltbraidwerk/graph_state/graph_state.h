#pragma once

#include <tuple>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/boolean_matrix.h"
#include "zeltbraidwerk/foundations/gate.h"

/// \file
/// Graph states: their compact circuits, how a circuit acts on a graph, and the direct synthesis.
///
/// A graph on n qubits is a symmetric matrix: a one off the diagonal is an edge, a one on it an S
/// on that qubit. A circuit solves the graph when its action leaves no one. Its gates, followed by
/// an H on every qubit, then turn the stabilisers of the graph state into single Z.

/// (code, first qubit, second qubit). Codes: 0 is S on the first qubit, the second is 0 and never
/// read; 1 is CZ; 2 is CNOT from the first qubit to the second. Any other code does nothing.
using GateTriple = std::tuple<int, int, int>;
using TripleCircuit = std::vector<GateTriple>;  ///< in time order

/// One S a set diagonal entry and one CZ an edge, in row-major order of the upper triangle, then H
/// on every qubit.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> naive_gs_synthesis(const BoolMatrix& graph);

/// The action of a circuit on the leading n by n block. S flips a diagonal entry, CZ an edge;
/// CNOT(a, b) adds column b to column a, then row b to row a. O(gates * n).
ZELTBRAIDWERK_EXPORT void simulate_circuit(BoolMatrix& graph, const TripleCircuit& circuit, int n);

/// Throws std::logic_error unless the circuit solves the leading n by n block.
ZELTBRAIDWERK_EXPORT void check_circuit(BoolMatrix graph, const TripleCircuit& circuit, int n);

/// A uniform draw a pair of qubits, the diagonal included, from random::uniform.
ZELTBRAIDWERK_EXPORT BoolMatrix random_graph(int n);

/// To standard output: entries as 0 or 1 with a blank after each, one line per row, one empty line
/// after the last.
ZELTBRAIDWERK_EXPORT void pretty_print(const BoolMatrix& matrix, int rows, int cols);

/// To standard output: the first n entries with a blank after each, and a line end.
/// @{
ZELTBRAIDWERK_EXPORT void pretty_print(const BoolRow& row, int n);
ZELTBRAIDWERK_EXPORT void pretty_print(const std::vector<int>& row, int n);
/// @}

/// To standard output: "S    0", "CZ   0 1", "CNOT 0 1" a line, and one empty line at the end.
ZELTBRAIDWERK_EXPORT void print_circuit(const TripleCircuit& circuit);
