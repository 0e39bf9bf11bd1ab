#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/graphs/graph.h"
#include "zeltbraidwerk/phase/phase_polynomial.h"
#include "zeltbraidwerk/search/search_effort.h"

namespace synthesis {

/// A circuit of few CNOTs and a PH gate a term for the diagonal operator of a phase polynomial, by
/// search. What its CNOTs compute is undone, with `in_place` wholly; otherwise qubit q ends on wire
/// wires[q].
///
/// The number of qubits is the length of the first key. Throws std::invalid_argument for a key of
/// another length, for the zero parity, which is a global phase, and for a device, on whose edges
/// all CNOTs are, that is not connected or has another number of vertices. One greedy run is made
/// even with no effort at all.
///
/// Memory: a table of 41 MB for the process, built in a second or two when it is first used.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> search_phase_synthesis(
    const PhasePolynomial& poly, std::vector<int>& wires, bool in_place,
    const SearchEffort& effort = {}, const structures::Graph* device = nullptr);

}  // namespace synthesis
