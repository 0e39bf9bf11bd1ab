#pragma once

#include <utility>
#include <vector>

#include "zeltbraidwerk/graphs/internal/bit_graph.h"

namespace zelt::braidwerk::internal {

/// The edges of a graph in matchings, at most one more than the largest degree (Misra and Gries,
/// Information Processing Letters 41, 1992). Takes time of vertices times edges.
std::vector<std::vector<std::pair<int, int>>> matchings_of(const BitGraph& graph);

/// The same in as few as the largest degree, which is the least, where the graph is bipartite
/// (D. Koenig, Mathematische Annalen 77, 1916), and often where it is not; never more than above.
std::vector<std::vector<std::pair<int, int>>> few_matchings_of(const BitGraph& graph);

}  // namespace zelt::braidwerk::internal
