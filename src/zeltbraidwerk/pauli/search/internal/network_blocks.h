#pragma once

#include "zeltbraidwerk/pauli/search/internal/network.h"
#include "zeltbraidwerk/pauli/search/internal/network_run.h"
#include "zeltbraidwerk/search/internal/effort.h"

namespace zelt::braidwerk::internal {

/// The networks of the blocks of a list, one after the other, each searched by itself.
Network search_blocks(const NetworkInput& input, const NetworkTask& task, const Effort& effort);

/// Whether the search of the blocks is worth effort at all.
bool are_worth_it(const DiagonalBlocks& blocks);

/// What the search of the blocks gets of the effort: all where there is one block, or where they
/// take hardly more gates to begin with, as they gain more by it than other ways; none where they
/// take many more, half of it otherwise. Sizes, by the objective, are those of runs that are made
/// whatever the effort: of the blocks, and the least of the others.
enum class BlockShare { none, half, all };
BlockShare share_of_blocks(const NetworkInput& input, const Task& task, int of_blocks,
                           int of_others);

/// Whether an end is open in name only: blocks of a list in layers are closed for the single
/// letters that follow them.
bool is_closed_anyhow(const NetworkInput& input, const Task& task);

}  // namespace zelt::braidwerk::internal
