#pragma once

#include <tuple>
#include <vector>

#include "zeltbraidwerk/export.h"

/// Which of n items to pair: a maximum-weight matching for a table of integer scores between them.
///
/// The table need not be symmetric: a pair counts with the larger of its two scores. Entries on the
/// diagonal are never matched. The pairs, the smaller item first, are appended to `matching`, in no
/// sorted order; an item left alone is in none. Returns the weight of the matching; 0 for n
/// below 1.
///
/// Cost O(n^3 log n), through LEMON. J. Edmonds, "Paths, trees, and flowers", Canadian Journal of
/// Mathematics 17 (1965) 449.
ZELTBRAIDWERK_EXPORT double BlossomAlgorithm(const std::vector<std::vector<int>>& weights, int n,
                                             std::vector<std::tuple<int, int>>& matching);
