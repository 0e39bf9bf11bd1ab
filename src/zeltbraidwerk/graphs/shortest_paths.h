#pragma once

#include <map>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/graphs/graph.h"

namespace lemon {
class ListDigraph;
}

namespace structures {

/// Copies the graph into an empty LEMON digraph, two arcs per edge: for each edge i < j in
/// ascending order the arc from j to i, then the arc from i to j. Returns the node id of each
/// vertex.
ZELTBRAIDWERK_EXPORT std::map<int, int> build_graph(const Graph& g, lemon::ListDigraph& d);

/// Fills `paths` with a shortest path for every ordered pair, both ends included; the empty path
/// for a pair out of reach of each other.
///
/// The paths out of a source are branches of one tree, that of LEMON's Bellman-Ford on build_graph
/// with unit lengths. On unit lengths it takes the vertices in the order in which a breadth-first
/// search meets them that looks at neighbours in descending order, and such a search is run here
/// instead: O(n * edges), where Bellman-Ford would pay a solver and an arc map per source.
/// The paths from i to j and from j to i need not be the same walk.
ZELTBRAIDWERK_EXPORT void compute_all_shortest_paths_lemon(
    Graph& g, std::vector<std::vector<std::vector<int>>>& paths);

}  // namespace structures
