#include "zeltbraidwerk/clifford/search/internal/placed_rewriter.h"

#include <cassert>

#include "zeltbraidwerk/clifford/search/internal/window_rewriter.h"

namespace zelt::braidwerk::internal {
namespace {

template <int wires>
bool rewrite_in_place(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) {
  const bool detour = rng.chance(uphill);
  if (window.gates.size() == 1 && !detour) return false;
  const WindowRows left = append_placed_circuit(
      PlacedTable<wires>::shared(), rows_of(window.gates, wires), detour, rng, rewrite.block);
  assert(rewrite.block.size() <= window.gates.size() + (detour ? 1 : 0));
  read_ends<wires>(left, rewrite);
  return true;
}

}  // namespace

bool PlacedRewriter::rewrite(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) const {
  switch (window.size) {
    case 2:
      return rewrite_in_place<2>(window, uphill, rng, rewrite);
    case 3:
      return rewrite_in_place<3>(window, uphill, rng, rewrite);
    default:
      return rewrite_in_place<4>(window, uphill, rng, rewrite);
  }
}

}  // namespace zelt::braidwerk::internal
