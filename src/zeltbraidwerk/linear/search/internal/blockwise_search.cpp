#include "zeltbraidwerk/linear/search/internal/blockwise_search.h"

#include <utility>

namespace zelt::braidwerk::internal {

BlockwiseSearch::BlockwiseSearch(const BitMatrix& m, int window)
    : n_(m.rows()), blocks_(blocks_of(m)) {
  for (const Block& block : blocks_) {
    BitMatrix matrix = block_matrix(m, block);
    const auto same = std::ranges::find(matrices_, matrix);
    which_.push_back(static_cast<std::size_t>(same - matrices_.begin()));
    if (same != matrices_.end()) continue;
    searches_.emplace_back(matrix, std::min(window, std::max(matrix.rows(), 2)));
    matrices_.push_back(std::move(matrix));
  }
}

void BlockwiseSearch::first(Rng& rng) {
  for (FreeSearch& search : searches_) search.first(rng);
}

GateList BlockwiseSearch::joined(const FreeSearch* search, const GateList* part) const {
  GateList all(n_, {});
  for (std::size_t b = 0; b < blocks_.size(); ++b) {
    const Block& block = blocks_[b];
    const FreeSearch& own = searches_[which_[b]];
    const GateList& list = &own == search ? *part : own.best();
    const auto wire = [&](End end) {
      return end_of(block.cols[static_cast<std::size_t>(wire_of(end))], label_of(end));
    };
    for (const Gate& gate : list.gates) all.gates.push_back({wire(gate.a), wire(gate.b)});
    for (std::size_t end = 0; end < list.frame.size(); ++end) {
      const End from = list.frame[end];
      all.frame[wire(static_cast<End>(end))] =
          end_of(block.rows[static_cast<std::size_t>(wire_of(from))], label_of(from));
    }
  }
  return all;
}

}  // namespace zelt::braidwerk::internal
