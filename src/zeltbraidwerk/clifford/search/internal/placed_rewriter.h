#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/placed_table.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// Appends a random one of the shortest circuits for an operator with its outputs in place, and
/// returns the one-qubit gates that are left of it. With `detour` it takes one gate more.
template <int wires>
WindowRows append_placed_circuit(const PlacedTable<wires>& table, WindowRows rows, bool detour,
                                 Rng& rng, std::vector<Gate>& block) {
  constexpr unsigned moves = PlacedTable<wires>::moves;
  constexpr unsigned stride = 7;  // all moves in turn, each on other wires than the last
  const auto took_one_that_leads_to = [&](unsigned residue) {
    auto move = static_cast<unsigned>(rng.below(moves));
    for (unsigned tried = 0; tried < moves; ++tried) {
      const WindowRows next = behind(window_gates[move], rows);
      if (table.allows(move) && table.residue(next) == residue) {
        block.push_back(window_gates[move]);
        rows = next;
        return true;
      }
      move += stride;
      if (move >= moves) move -= moves;
    }
    return false;
  };
  unsigned residue = table.residue(rows);
  if (detour) took_one_that_leads_to(residue);
  do {
    residue = residue == 0 ? 2 : residue - 1;
  } while (took_one_that_leads_to(residue));
  return rows;
}

/// Replaces windows of Clifford gates by random shortest circuits that leave every wire in its
/// place, or longer ones uphill. The one-qubit gates that a block leaves go behind the gates.
class ZELTBRAIDWERK_KERNEL_EXPORT PlacedRewriter {
 public:
  static constexpr Gathering gathering = Gathering::by_labels;
  static constexpr bool judges = false;

  /// Windows of 2 to 4 wires. The table for four is built when they come up first.
  explicit PlacedRewriter(int wires) : wires_(wires) {}

  int window_size(Rng&) const { return wires_; }
  bool rewrite(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) const;

 private:
  int wires_;
};

}  // namespace zelt::braidwerk::internal
