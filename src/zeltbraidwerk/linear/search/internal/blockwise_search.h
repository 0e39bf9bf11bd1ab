#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/linear/search/internal/blocks.h"
#include "zeltbraidwerk/linear/search/internal/free_search.h"

namespace zelt::braidwerk::internal {

/// The blocks of a map, equal ones searched once, put together to one circuit with its outputs
/// anywhere.
class BlockwiseSearch {
 public:
  BlockwiseSearch(const BitMatrix& m, int window);

  /// Finds a circuit, whatever the effort.
  void first(Rng& rng);

  /// Takes a known circuit of a map that is one block for its best, where it is no longer.
  void begin_with(const GateList& list) {
    if (searches_.size() == 1 && blocks_.size() == 1) searches_[0].begin_with(list);
  }

  bool finished() const { return std::ranges::all_of(searches_, &FreeSearch::finished); }

  /// The search of a map that is one block; null for others.
  const FreeSearch* single() const { return searches_.size() == 1 ? &searches_[0] : nullptr; }

  GateList best() const { return joined(nullptr, nullptr); }

  /// Each block gets a share of the steps by its size. found(make) hears of circuits of the whole
  /// map that are no longer than any before; make() gives the circuit.
  template <class Found>
  void round(int number, std::uint64_t steps, Rng& rng, Meter& meter, Found&& found) {
    for (std::size_t k = 0; k < searches_.size(); ++k) {
      const auto share = static_cast<std::uint64_t>(matrices_[k].rows()) * steps /
                         static_cast<std::uint64_t>(std::max(n_, 1));
      searches_[k].round(number, share + 1, rng, meter, [&](const GateList& list) {
        found([&] { return joined(&searches_[k], &list); });
      });
      if (meter.ended()) return;
    }
  }

 private:
  /// The best circuits of the blocks, but `part` in the place of that of one search.
  GateList joined(const FreeSearch* search, const GateList* part) const;

  int n_;
  std::vector<Block> blocks_;
  std::vector<BitMatrix> matrices_;  // the different ones
  std::vector<FreeSearch> searches_;
  std::vector<std::size_t> which_;  // by block
};

}  // namespace zelt::braidwerk::internal
