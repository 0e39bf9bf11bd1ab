#include "zeltbraidwerk/clifford/search/internal/state_rewriter.h"

#include <bit>

#include "zeltbraidwerk/clifford/search/internal/state_gauge.h"

namespace zelt::braidwerk::internal {
namespace {

/// Of the operators after `control` controls any operator within `mask`, a random one of those with
/// the fewest gates.
template <int wires>
WindowRows best_after_control(unsigned control, unsigned mask, WindowRows rows, Rng& rng) {
  const auto& table = OperatorTable<wires>::shared();
  const unsigned turn = deposited(static_cast<unsigned>(rng.below(1 << std::popcount(mask))), mask);
  WindowRows best = rows;
  int least = 1 << 8;
  unsigned k = 0;
  do {
    const WindowRows same = rows_after_control(control, k ^ turn, rows);
    const int distance = table.find(same).distance;
    if (distance < least) {
      least = distance;
      best = same;
    }
    k = (k - mask) & mask;
  } while (k != 0);
  return best;
}

}  // namespace

unsigned StateRewriter::logical_places(const Window& window) const {
  unsigned places = 0;
  for (int q = 0; q < window.size; ++q) {
    if (window.wires[static_cast<std::size_t>(q)] < logical_) places |= 1U << q;
  }
  return places;
}

template <int wires>
bool StateRewriter::rewrite_on(const Window& window, float uphill, Rng& rng,
                               Rewrite& rewrite) const {
  WindowRows rows = rows_of(window.gates, wires);
  const unsigned logical = window.from_start & logical_places(window);
  const unsigned fresh = any_logicals_ ? window.from_start : window.from_start & ~logical;
  if (fresh != 0) {
    const auto q = static_cast<int>(random_move(fresh, rng));
    const unsigned others = ((1U << (2 * wires)) - 1) & ~pauli_on(q, 3);
    if ((logical >> q & 1) == 0) {
      rows = best_after_control<wires>(pauli_on(q, label_z), others, rows, rng);
    } else {
      // A zero must stay one: it takes part by its Z.
      unsigned free = 0;
      for (int other = 0; other < wires; ++other) {
        if ((fresh >> other & 1) != 0) free |= pauli_on(other, logical >> other & 1 ? 3 : label_z);
      }
      const auto label = static_cast<unsigned>(rng.below(3)) + 1;
      rows = best_after_control<wires>(pauli_on(q, label), free & others, rows, rng);
    }
  }
  return rewrite_rows<wires>(rows, static_cast<int>(window.gates.size()), uphill, rng, rewrite);
}

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
