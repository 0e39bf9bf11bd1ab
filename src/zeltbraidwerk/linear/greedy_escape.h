#pragma once

#include "zeltbraidwerk/linear/greedy_ones.h"

/// \file
/// The greedy search on the number of ones that does not go on where no operation lowers it: it
/// then synthesises the inverse of what is left, by the same search, and replays that circuit,
/// which leaves a permutation. Up to 20 escapes can be nested.

namespace synthesis {

/// As compute_next_operation_ones, but (-1, -1, false) without a draw when the best candidate does
/// not cost less than the ones of A.
ZELTBRAIDWERK_EXPORT Operation compute_next_operation_ones_with_escape(
    int n, int width, int depth, const BoolMatrix& A, const std::vector<std::vector<int>>& R,
    const std::vector<std::vector<int>>& C);

/// As greedy_synthesis_ones, with escapes. `level` counts those already taken on the way to this
/// call; from 20 on the search ends where it would escape, with what it has. Every escape writes a
/// line with its level to standard output. The cap of 1000 operations counts anew in each.
ZELTBRAIDWERK_EXPORT structures::CnotCircuit greedy_synthesis_ones_with_escape(
    int n, BoolMatrix A, std::vector<int>& perm, int width, int depth, int level);

}  // namespace synthesis
