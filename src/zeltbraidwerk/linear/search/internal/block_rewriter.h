#pragma once

#include <bit>
#include <cassert>

#include "zeltbraidwerk/linear/search/internal/map_table.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// Windows of a CNOT circuit replaced by random shortest circuits for them.
class BlockRewriter {
 public:
  static constexpr Gathering gathering = Gathering::of_cnots;
  static constexpr bool judges = false;

  /// Windows of `largest` wires, and equally often of one less. With `permuted`, what leaves a
  /// window may leave it on other wires of the window.
  BlockRewriter(int largest, bool permuted) : largest_(largest) {
    for (int k = 2; k <= largest; ++k) {
      tables_[static_cast<std::size_t>(k)] = &MapTable::of(k, complete_graph(k), permuted);
    }
  }

  int window_size(Rng& rng) const { return largest_ - (rng.coin() ? 1 : 0); }

  bool rewrite(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) const {
    const auto size = static_cast<int>(window.gates.size());
    if (size < 2) return false;
    const MapTable& table = *tables_[static_cast<std::size_t>(window.size)];
    const SmallMatrix m = table.map_of(window.gates);
    const int distance = table.distance(m);
    if (distance > size) return false;  // uphill moves only make the list longer by one
    const int detours = distance == size && rng.chance(uphill) ? 1 : 0;
    const SmallMatrix left = table.descend(m, detours, rng, rewrite.block);
    assert(table.product(left, table.map_of(rewrite.block)) == m);
    if (left != table.identity()) rename(left, table.wires(), rewrite);
    return true;
  }

 private:
  /// What the block leaves on place c is wanted on place r, where row r of `left` is unit c: from
  /// now on it goes by c.
  static void rename(SmallMatrix left, int wires, Rewrite& rewrite) {
    rewrite.renames = true;
    for (int r = 0; r < wires; ++r) {
      const SmallMatrix row = (left >> (wires * r)) & ((1U << wires) - 1);
      for (int label = 0; label < 4; ++label) {
        rewrite.ends[static_cast<std::size_t>(r)][static_cast<std::size_t>(label)] =
            end_of(std::countr_zero(row), label);
      }
    }
  }

  int largest_;
  std::array<const MapTable*, 6> tables_{};
};

}  // namespace zelt::braidwerk::internal
