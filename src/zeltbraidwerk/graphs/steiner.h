#pragma once

#include <set>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/graphs/graph.h"

/// \file
/// Steiner trees: subgraphs that join a list of terminals. A tree has the n of its graph, its own
/// edges and `vertices`, and nothing else. Both builders read g.shortest_paths, which must be
/// filled. A terminal outside the graph, or a table that was not filled, throws std::out_of_range
/// (a single terminal needs no table).

namespace structures {

/// Grows a tree from the first terminal by attaching the terminal nearest to it, again and again,
/// along a shortest path; of equally near ones the smallest terminal, then the smallest tree
/// vertex. The shortest-path heuristic of H. Takahashi, A. Matsuyama, "An approximate solution for
/// the Steiner problem in graphs", Math. Japonica 24 (1980) 573: at most twice the smallest tree.
///
/// No terminals: all n vertices and no edges. A terminal out of reach enters `vertices` without an
/// edge. Cost O(k * vertices of the tree) for k terminals.
ZELTBRAIDWERK_EXPORT Graph steiner_good(Graph& g, std::vector<int>& terminals);

/// Joins all terminals by shortest paths to one common seed of their sketches, the seed that needs
/// the fewest vertices. After the distance sketches of A. Das Sarma, S. Gollapudi, M. Najork,
/// R. Panigrahy, "A sketch-based distance oracle for web-scale graphs", WSDM 2010.
///
/// Draws g.sketches when there are none. The result always holds the seed, is connected, and may
/// close a cycle. Graph() when no seed is common to all terminals and within their reach: for no
/// terminals, on a graph of one vertex, or when edges went away after the sketches were drawn.
ZELTBRAIDWERK_EXPORT Graph sketch_steiner(Graph& g, std::vector<int>& terminals);

/// A random sample of the vertices: `size` draws from 0 to n - 1, repeats collapsed. Empty for a
/// size or n below 1.
ZELTBRAIDWERK_EXPORT std::set<int> get_seed_set(int n, int size);

/// Seed sets of 1, 2, 4, ... draws, floor(log2(n)) of them.
ZELTBRAIDWERK_EXPORT std::vector<std::set<int>> get_seed_sets(int n);

/// For each vertex the nearest seed of every set, by g.shortest_paths: of seeds at equal distance
/// one already in the sketch, or else the smallest.
ZELTBRAIDWERK_EXPORT std::vector<std::set<int>> build_sketches(
    const std::vector<std::set<int>>& seed_sets, Graph& g);

}  // namespace structures
