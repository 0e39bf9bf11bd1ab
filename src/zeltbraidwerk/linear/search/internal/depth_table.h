#pragma once

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/linear/search/internal/map_table.h"

namespace zelt::braidwerk::internal {

/// Wires of the maps for which fewest_layers() is known.
inline constexpr int most_tabled_wires = 4;

/// The fewest layers of disjoint CNOTs that implement an invertible map of 2 to 4 wires, outputs in
/// their places or (`permuted`) on any wires. By breadth-first search over all maps, once for each
/// size in a process; 64 kB and some milliseconds for four wires.
int fewest_layers(int wires, SmallMatrix m, bool permuted);

/// Of up to five rows.
inline SmallMatrix small_matrix(const BitMatrix& m) {
  SmallMatrix map = 0;
  for (int r = 0; r < m.rows(); ++r) map |= static_cast<SmallMatrix>(m.row(r)[0]) << (m.rows() * r);
  return map;
}

}  // namespace zelt::braidwerk::internal
