#include "zeltbraidwerk/clifford/search/internal/window_rewriter.h"

#include <cassert>

namespace zelt::braidwerk::internal {
namespace {

template <int wires>
bool rewrite_on(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) {
  const auto& table = WindowTable<wires>::shared();
  const WindowRows rows = rows_of(window.gates, wires);
  const int old = static_cast<int>(window.gates.size());
  const int distance = table.find(rows).distance;
  assert(distance <= old);
  const bool detour = distance == old && rng.chance(uphill);
  if (old == 1 && distance == 1 && !detour) return false;
  const WindowRows left = append_circuit(table, rows, detour, rng, rewrite.block);
  read_ends<wires>(left, rewrite);
  return true;
}

}  // namespace

bool WindowRewriter::rewrite(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) const {
  switch (window.size) {
    case 2:
      return rewrite_on<2>(window, uphill, rng, rewrite);
    case 3:
      return rewrite_on<3>(window, uphill, rng, rewrite);
    default:
      return rewrite_on<4>(window, uphill, rng, rewrite);
  }
}

}  // namespace zelt::braidwerk::internal
