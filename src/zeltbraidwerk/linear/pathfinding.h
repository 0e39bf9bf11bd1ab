#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/cnot_circuit.h"

namespace synthesis {

/// The shortest circuit of several runs of one greedy search, each with fresh draws; of equal
/// lengths the first. Runs `restarts` times, at least once.
///
/// `cost` selects the search: "ones" is greedy_synthesis_ones, with `escape`
/// greedy_synthesis_ones_with_escape, else with `with_inverse` greedy_synthesis_ones_with_inv;
/// "log" is greedy_synthesis_log, whatever the two flags. With any other text nothing is run, perm
/// stays as it was and the default circuit is returned: one qubit, no gates.
///
/// perm has at least n entries and receives the permutation of the returned circuit: output r of
/// the wanted operation comes out on wire perm[r]. See greedy_ones.h for the direction, `width` and
/// `depth`, and for what happens when a search does not finish.
ZELTBRAIDWERK_EXPORT structures::CnotCircuit pathfinding_synthesis(int n, const BoolMatrix& A,
                                                                   std::vector<int>& perm,
                                                                   char* cost, bool with_inverse,
                                                                   int width, int depth,
                                                                   int restarts, bool escape);

}  // namespace synthesis
