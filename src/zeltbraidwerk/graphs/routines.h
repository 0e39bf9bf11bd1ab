#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/graphs/graph.h"

/// \file
/// CNOT sequences on the edges of a tree. A tree is what Graph::steiner_tree returns; a vertex
/// belongs to it when it has an edge, whatever `vertices` holds. Cost O(n^2 / 64) to O(n^3 / 64).
///
/// Two pairs. Fan-in: one qubit ends with the sum of the terminals, all others cancel out of it.
/// Fill and empty: one column of a matrix is cleared along the tree, but for the root's entry
/// (A. Kissinger, A. Meijer-van de Griend, "CNOT circuit extraction for topologically-constrained
/// quantum memories", Quantum Information and Computation 20 (2020) 581).
///
/// All failures are std::logic_error "ooops"; nothing partial is returned.

namespace routines {

/// Adds each vertex that is not a terminal into a neighbour, spreading outward from the terminals,
/// so that its value enters the fan-in twice. Fails where a part of the tree has no terminal.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> fill_for_fan_in(
    const structures::Graph& tree, const std::vector<int>& terminals);

/// Folds the tree onto the root, the smallest leaf first. Fails on a cycle, and on a tree that does
/// not hold the root.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> empty_for_fan_in(const structures::Graph& tree,
                                                                    int root);

/// Both in turn: the root ends with the sum of the terminals. As many gates as the tree has
/// non-terminals and edges.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> fan_in_on_tree(const structures::Graph& tree,
                                                                  const std::vector<int>& terminals,
                                                                  int root);

/// Sets the column's entry of every tree vertex. `targets` lists the vertices whose entry is 1, and
/// the root; `root_is_set` tells the root's own. The walk is breadth-first, from the root, or from
/// the smallest leaf when the root's entry is 0.
///
/// Fails, with a line on standard error, when the root is the only target and its entry is 0 (the
/// matrix at hand is singular), or when there is no leaf to start from.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> fill_tree(const structures::Graph& tree,
                                                             const std::vector<int>& targets,
                                                             int root, bool root_is_set);

/// Clears every vertex but the root, leaves first, each by its parent. `targets` plays no part.
/// Fails, with a line on standard error, when a leaf has no parent left.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> empty_tree(const structures::Graph& tree,
                                                              const std::vector<int>& targets,
                                                              int root);

}  // namespace routines
