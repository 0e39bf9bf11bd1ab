#pragma once

#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/graphs/graph.h"

/// \file
/// Descending trees for a Hamiltonian path and a root: walking away from the root, no step goes to
/// a vertex at a later position of the path than the one it comes from.

namespace structures {

/// Takes away the edges of every leaf outside `keep`, until none is left. A chain without a vertex
/// of `keep` loses all its edges. `vertices` stays as it is.
ZELTBRAIDWERK_EXPORT void prune_leaves(Graph& tree, std::vector<int>& keep);

/// The tree that hangs each vertex of the path, from before the root down to targets[0], below its
/// neighbour nearest to the root on the path, pruned to the targets. Told by its edges alone:
/// `vertices` holds all of them. A single target, or none, gives no edges.
///
/// Throws std::logic_error "Not a descending tree :/" where the result is none, which a Hamiltonian
/// path rules out, and std::out_of_range when targets[0] is not on the path.
ZELTBRAIDWERK_EXPORT Graph shortcut_ham_path(const Graph& graph, std::vector<int>& path,
                                             std::vector<int>& targets, int root);

/// Whether the tree is a descending one for the path and the root.
ZELTBRAIDWERK_EXPORT bool check_is_descending(const Graph& tree, std::vector<int>& path, int root);

}  // namespace structures
