#include "zeltbraidwerk/clifford/search/internal/state_rewriter.h"

#include <bit>

namespace zelt::braidwerk::internal {
namespace {

constexpr WindowRows every_row = 0x0101010101010101;

/// The rows after Z on wire q controlling `pauli`, which has no letter there: what has X on q is
/// multiplied by it, what anticommutes with it by Z on q.
constexpr WindowRows rows_after_control(int q, unsigned pauli, WindowRows rows) {
  const WindowRows has_x = rows >> (2 * q) & every_row;
  const unsigned swapped = (pauli & 0x55U) << 1 | (pauli & 0xaaU) >> 1;
  WindowRows odd = rows & (every_row * swapped);
  odd ^= odd >> 4;
  odd ^= odd >> 2;
  odd ^= odd >> 1;
  return rows ^ has_x * pauli ^ (odd & every_row) << (2 * q + 1);
}

/// Of the operators that are the same where wire q comes in as zero, a random one of those with the
/// fewest gates.
template <int wires>
WindowRows with_fresh(int q, WindowRows rows, Rng& rng) {
  const auto& table = OperatorTable<wires>::shared();
  constexpr unsigned paulis = 1U << (2 * (wires - 1));
  const unsigned low = (1U << (2 * q)) - 1;
  const auto turn = static_cast<unsigned>(rng.below(paulis));
  WindowRows best = rows;
  int least = 1 << 8;
  for (unsigned k = 0; k < paulis; ++k) {
    const unsigned others = k ^ turn;
    const WindowRows same = rows_after_control(q, (others & low) | (others & ~low) << 2, rows);
    const int distance = table.find(same).distance;
    if (distance < least) {
      least = distance;
      best = same;
    }
  }
  return best;
}

template <int wires>
bool rewrite_on(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) {
  WindowRows rows = rows_of(window.gates, wires);
  if (window.from_start != 0) {
    const auto fresh = random_move(window.from_start, rng);
    rows = with_fresh<wires>(static_cast<int>(fresh), rows, rng);
  }
  return rewrite_rows<wires>(rows, static_cast<int>(window.gates.size()), uphill, rng, rewrite);
}

}  // namespace

bool StateRewriter::rewrite(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) const {
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
