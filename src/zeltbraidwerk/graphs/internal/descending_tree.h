#pragma once

#include <span>
#include <vector>

#include "zeltbraidwerk/export.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"

namespace zelt::braidwerk::internal {

/// First position of each vertex on the path, -1 where it has none.
ZELTBRAIDWERK_KERNEL_EXPORT std::vector<int> path_positions(std::span<const int> path, int n);

/// See prune_leaves, check_is_descending and shortcut_ham_path in graphs/descending_tree.h; here
/// the positions come from path_positions.
ZELTBRAIDWERK_KERNEL_EXPORT void prune_leaves(BitGraph& tree, const VertexSet& keep);
ZELTBRAIDWERK_KERNEL_EXPORT bool is_descending(const BitGraph& tree, std::span<const int> positions,
                                               int root);
ZELTBRAIDWERK_KERNEL_EXPORT BitGraph shortcut_ham_path(const BitGraph& graph,
                                                       std::span<const int> path,
                                                       std::span<const int> positions,
                                                       std::span<const int> targets, int root);

}  // namespace zelt::braidwerk::internal
