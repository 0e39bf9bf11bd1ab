#include "zeltbraidwerk/pauli/search/internal/network_blocks.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "zeltbraidwerk/pauli/search/internal/network_search.h"
#include "zeltbraidwerk/pauli/search/internal/tuning.h"

namespace zelt::braidwerk::internal {
namespace {

PlacedEvents search_block(const NetworkInput& input, NetworkTask task, std::size_t block,
                          const Effort& effort) {
  const DiagonalBlocks& blocks = input.blocks;
  task.given = nullptr;  // a network of the whole list, not of this block
  // In place, so that an open end is never longer than a closed one; and on a device the next block
  // needs its qubits where they were.
  if (!blocks.is_last(block) && (!task.closes() || task.device != nullptr)) {
    task.outputs = Outputs::in_place;
  }
  std::vector<int> parities = blocks.parities_of(block);
  const bool in_order = std::exchange(task.in_order, false);
  if (blocks.are_all() && !in_order) {
    std::ranges::sort(parities);
    return search_parity_network(blocks.strings_of(block, parities).frame, task, effort);
  }
  Network network = search_events(blocks.strings_of(block, parities), task, effort);
  for (NetworkEvent& event : network.events) {
    if (event.row >= 0) event.row = parities[static_cast<std::size_t>(event.row)];
  }
  return {std::move(network.events), std::move(network.wires)};
}

}  // namespace

Network search_blocks(const NetworkInput& input, const NetworkTask& task, const Effort& effort) {
  PlacedEvents all = input.blocks.search(
      [&](std::size_t block, const Effort& share) {
        return search_block(input, task, block, share);
      },
      effort);
  return network_of(std::move(all.events), std::move(all.wires), task.closes());
}

bool are_worth_it(const DiagonalBlocks& blocks) {
  return blocks.count() > 0 && blocks.are_large();
}

BlockShare share_of_blocks(const NetworkInput& input, const Task& task, int of_blocks,
                           int of_others) {
  const bool several = input.blocks.count() > 1;
  if (task.by_depth()) {
    // Layers of several blocks do not add up: more effort for each could make more of them.
    if (several) return BlockShare::none;
    if (of_blocks <= of_others) return BlockShare::all;
  } else if (!several || of_blocks <= network_tuning.all_to_blocks * of_others) {
    return BlockShare::all;
  }
  return of_blocks <= network_tuning.half_to_blocks * of_others ? BlockShare::half
                                                                : BlockShare::none;
}

bool is_closed_anyhow(const NetworkInput& input, const Task& task) {
  const DiagonalBlocks& blocks = input.blocks;
  return !task.closes() && are_worth_it(blocks) && !blocks.is_last(blocks.count() - 1) &&
         (task.by_depth() || blocks.count() > 1);
}

}  // namespace zelt::braidwerk::internal
