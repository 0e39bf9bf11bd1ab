#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/cnot_circuit.h"
#include "zeltbraidwerk/search/search_effort.h"

namespace synthesis {

/// A short CNOT circuit of an invertible matrix, by search: a greedy reduction by additions of rows
/// and of columns, then beams of them, then walks among the circuits of the map through windows
/// whose shortest circuits are known.
///
/// The circuit implements the leading n by n block of A itself: output r comes out on wire perm[r].
/// With `in_place` perm is the identity. perm has at least n entries. The greedy reduction is made
/// even with no effort at all. On a singular matrix the circuit implements something else.
///
/// Memory: tables of 64 MB for the process, built in 0.2 s at the first call.
ZELTBRAIDWERK_EXPORT structures::CnotCircuit search_synthesis(int n, const BoolMatrix& A,
                                                              std::vector<int>& perm, bool in_place,
                                                              const SearchEffort& effort = {});

}  // namespace synthesis
