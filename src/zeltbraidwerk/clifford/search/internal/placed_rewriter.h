#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/placed_table.h"
#include "zeltbraidwerk/clifford/search/internal/window_symmetries.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
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
      const WindowRows next = rows_after(window_gates[move], rows);
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
  for (;;) {
    if (residue == 0 && are_on_own_wires<wires>(rows)) {
      rng.next();  // as the search for a move would, which looks at all of them in vain
      return rows;
    }
    residue = residue == 0 ? 2 : residue - 1;
    if (!took_one_that_leads_to(residue)) return rows;
  }
}

/// Which output comes out on each place.
template <std::size_t wires>
using Places = std::array<unsigned, wires>;

template <std::size_t wires>
Places<wires> random_places(Rng& rng) {
  Places<wires> places{};
  std::iota(places.begin(), places.end(), 0U);
  for (unsigned k = wires; k > 1; --k) {
    std::swap(places[k - 1], places[static_cast<unsigned>(rng.below(static_cast<int>(k)))]);
  }
  return places;
}

/// The same as append_placed_circuit for an operator whose outputs are moved to their places.
template <int wires>
WindowRows append_reordered_circuit(const PlacedTable<wires>& table, WindowRows rows,
                                    const Places<wires>& places, bool detour, Rng& rng,
                                    std::vector<Gate>& block) {
  WindowRows placed = 0;
  for (unsigned p = 0; p < wires; ++p) placed |= (rows >> (16 * places[p]) & 0xffff) << (16 * p);
  const WindowRows left = append_placed_circuit(table, placed, detour, rng, block);
  WindowRows renaming = 0;
  for (unsigned p = 0; p < wires; ++p) renaming |= (left >> (16 * p) & 0xffff) << (16 * places[p]);
  return renaming;
}

/// What comes in on the wires that no gate has touched.
enum class Inputs : std::uint8_t { anything, zeros };

/// Replaces windows of Clifford gates by random shortest circuits that leave every wire in its
/// place, or longer ones uphill. The one-qubit gates that a block leaves go after the gates.
///
/// On a device, by circuits on its edges alone; with free outputs the last windows may move theirs.
/// Where zeros come in, what Z on one of them controls is nothing: see StateRewriter.
class PlacedRewriter {
 public:
  static constexpr Gathering gathering = Gathering::by_labels;
  static constexpr bool judges = false;

  /// Windows of 2 to 4 wires. The tables for four are built when they come up first.
  explicit PlacedRewriter(int wires) : wires_(wires) {}
  PlacedRewriter(int wires, const BitGraph& device, Outputs outputs,
                 Inputs inputs = Inputs::anything)
      : wires_(wires), device_(&device), outputs_(outputs), inputs_(inputs) {}

  int window_size(Rng&) const { return wires_; }
  bool rewrite(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) const;

 private:
  template <int wires>
  bool rewrite_on(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) const;

  int wires_;
  const BitGraph* device_ = nullptr;
  Outputs outputs_ = Outputs::in_place;
  Inputs inputs_ = Inputs::anything;
};

}  // namespace zelt::braidwerk::internal
