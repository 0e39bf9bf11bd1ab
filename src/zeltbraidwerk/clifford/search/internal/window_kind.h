#pragma once

#include <array>
#include <cstdint>

#include "zeltbraidwerk/clifford/search/internal/placed_table.h"

namespace zelt::braidwerk::internal {

/// The pairs of a window's wires that gates may be on: bit b (b - 1) / 2 + a for a < b.
using WindowGraph = unsigned;

constexpr WindowGraph window_edge(int a, int b) {
  return a < b ? 1U << (b * (b - 1) / 2 + a) : 1U << (a * (a - 1) / 2 + b);
}
template <int wires>
inline constexpr WindowGraph complete_window = (1U << (wires * (wires - 1) / 2)) - 1;

/// Graphs that are equal up to the names of their vertices share a table.
template <int wires>
struct WindowKind {
  std::array<std::uint8_t, wires> name;  ///< of each place, in the table
  const PlacedTable<wires>* table;
};

/// The table is built when its kind is asked for first; on four wires there are six kinds that hang
/// together, of 9 MB each.
template <int wires>
const WindowKind<wires>& kind_of(WindowGraph graph);

}  // namespace zelt::braidwerk::internal
