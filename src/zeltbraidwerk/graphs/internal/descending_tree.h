#pragma once

#include <span>
#include <vector>

#include "zeltbraidwerk/graphs/internal/bit_graph.h"

namespace zelt::braidwerk::internal {

/// First position of each vertex on the path, -1 where it has none.
std::vector<int> path_positions(std::span<const int> path, int n);

/// See prune_leaves, check_is_descending and shortcut_ham_path in graphs/descending_tree.h; here
/// the positions come from path_positions.
void prune_leaves(BitGraph& tree, const VertexSet& keep);
bool is_descending(const BitGraph& tree, std::span<const int> positions, int root);
BitGraph shortcut_ham_path(const BitGraph& graph, std::span<const int> path,
                           std::span<const int> positions, std::span<const int> targets, int root);

}  // namespace zelt::braidwerk::internal
