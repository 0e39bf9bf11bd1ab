#pragma once

#include <bit>
#include <cassert>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/operator_table.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// One of the moves in a set that is not empty.
inline unsigned random_move(std::uint64_t moves, Rng& rng) {
  const int from = rng.below(64);
  const std::uint64_t turned = std::rotr(moves, from);
  return static_cast<unsigned>(std::countr_zero(turned) + from) & 63;
}

/// Appends a random one of the shortest circuits for an operator, and returns what is left of it:
/// one-qubit gates and a renaming. With `detour` it takes one gate more, where there is such a way.
template <int wires>
WindowRows append_circuit(const OperatorTable<wires>& table, WindowRows rows, bool detour, Rng& rng,
                          std::vector<Gate>& block) {
  auto entry = table.find(rows);
  const auto take = [&](unsigned move) {
    block.push_back(window_gates[move]);
    rows = rows_after(window_gates[move], rows);
  };
  if (detour && entry.distance > 0) {
    constexpr unsigned moves = OperatorTable<wires>::moves;
    auto move = static_cast<unsigned>(rng.below(moves));
    for (unsigned tried = 0; tried < moves; ++tried, move = move + 1 == moves ? 0 : move + 1) {
      const auto next = table.find(rows_after(window_gates[move], rows));
      if (next.distance != entry.distance || next.down == 0) continue;
      take(move);
      entry = next;
      break;
    }
  }
  while (entry.down != 0) {
    take(random_move(entry.down, rng));
    if (entry.distance == 1) break;
    entry = table.find(rows);
  }
  return rows;
}

/// By which end each end goes after what is left of an operator.
template <int wires>
void read_ends(WindowRows left, Rewrite& rewrite) {
  rewrite.renames = left != identity_rows_on(wires);
  for (unsigned i = 0; i < wires; ++i) {
    const auto x = static_cast<std::uint8_t>(left >> (16 * i));
    const auto z = static_cast<std::uint8_t>(left >> (16 * i + 8));
    const int place = std::countr_zero(x) / 2;
    const auto end = [&](unsigned pauli) {
      return end_of(place, static_cast<int>(pauli >> (2 * place)));
    };
    rewrite.ends[i] = {end(0), end(x), end(z), end(static_cast<unsigned>(x ^ z))};
  }
}

/// Fills `rewrite` for an operator that `old` gates make, which are as many as it takes or more.
/// False where there is nothing to choose.
template <int wires>
bool rewrite_rows(WindowRows rows, int old, float uphill, Rng& rng, Rewrite& rewrite) {
  const auto& table = OperatorTable<wires>::shared();
  const int distance = table.find(rows).distance;
  assert(distance <= old);
  const bool detour = distance == old && rng.chance(uphill);
  if (old == 1 && distance == 1 && !detour) return false;
  const WindowRows left = append_circuit(table, rows, detour, rng, rewrite.block);
  read_ends<wires>(left, rewrite);
  return true;
}

/// Replaces windows of Clifford gates by random shortest circuits, or longer ones uphill. What the
/// block leaves of one-qubit gates and of a renaming of its wires goes after the gates.
class WindowRewriter {
 public:
  static constexpr Gathering gathering = Gathering::by_labels;
  static constexpr bool judges = false;

  /// Windows of 2 to 4 wires. The table for four is built when they come up first.
  explicit WindowRewriter(int wires) : wires_(wires) {}

  int window_size(Rng&) const { return wires_; }
  bool rewrite(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) const;

 private:
  int wires_;
};

}  // namespace zelt::braidwerk::internal
