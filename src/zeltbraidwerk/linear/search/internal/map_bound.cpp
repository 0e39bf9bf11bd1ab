#include "zeltbraidwerk/linear/search/internal/map_bound.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/linear/search/internal/blocks.h"
#include "zeltbraidwerk/linear/search/internal/cut_bound.h"
#include "zeltbraidwerk/linear/search/internal/depth_table.h"
#include "zeltbraidwerk/linear/search/internal/map_table.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {

namespace {

/// Rows that are not an input as it came in; with exact outputs, not the one of their wire.
std::vector<bool> changed_rows(const BitMatrix& m, bool exact) {
  std::vector<bool> changed;
  for (int r = 0; r < m.rows(); ++r) {
    changed.push_back(m.row_weight(r) > 1 || (exact && !m.get(r, r)));
  }
  return changed;
}

BitMatrix with_diagonal(BitMatrix m) {
  for (int r = 0; r < m.rows(); ++r) m.set(r, r);
  return m;
}

int heaviest_row(const BitMatrix& m) {
  int heaviest = 0;
  for (int r = 0; r < m.rows(); ++r) heaviest = std::max(heaviest, m.row_weight(r));
  return heaviest;
}

auto across_in(const BitMatrix& m) {
  return [&m](const VertexSet& side) { return gates_across(m, side); };
}

}  // namespace

LowerBound bound_of_map(const BitMatrix& m, bool exact) {
  const int n = m.rows();
  LowerBound bound;
  if (n < 2) return bound;
  const BitMatrix across = m.transposed();
  const std::vector<bool> rows = changed_rows(m, exact);
  const std::vector<bool> cols = changed_rows(across, exact);
  int by_rows = 0;  // blocks that take one gate per wire for their rows alone
  int by_cols = 0;
  for (const Block& block : blocks_of(exact ? with_diagonal(m) : m)) {
    const auto wires = static_cast<std::ptrdiff_t>(block.rows.size());
    const auto in = [](const std::vector<bool>& changed) {
      return [&changed](int k) { return changed[static_cast<std::size_t>(k)]; };
    };
    const std::ptrdiff_t a = std::ranges::count_if(block.rows, in(rows));
    const std::ptrdiff_t b = std::ranges::count_if(block.cols, in(cols));
    bound.count += static_cast<int>(std::max({wires - 1, a, b}));
    by_rows += a == wires && b < wires;
    by_cols += b == wires && a < wires;
    if (wires > 1) bound.depth = std::max(bound.depth, wires > 2 ? 2 : 1);
  }
  bound.count -= std::min(by_rows, by_cols);
  for (int k = 0; exact && k < n; ++k) {
    const auto wire = static_cast<std::size_t>(k);
    if (rows[wire] && cols[wire]) bound.depth = std::max(bound.depth, 2);
  }
  const BitMatrix back = inverse(m);
  for (const BitMatrix* map : {&m, &back}) {
    for (const BitMatrix& lines : {*map, map->transposed()}) {
      bound.depth = std::max(bound.depth, layers_to_spread(heaviest_row(lines)));
    }
  }
  if (n <= most_tabled_wires) {
    const SmallMatrix map = small_matrix(m);
    bound.raise(
        {MapTable::of(n, complete_graph(n), !exact).distance(map), fewest_layers(n, map, !exact)});
  } else if (exact && n <= most_cut_wires) {
    bound.raise(bound_of_cuts(cuts_of_all_pairs(n), across_in(m)));
  }
  bound.depth = std::max(bound.depth, layers_to_hold(bound.count, n));
  return bound;
}

LowerBound bound_of_map_on_device(const BitMatrix& m, const BitGraph& graph, int reach) {
  const int n = m.rows();
  LowerBound bound = bound_of_map(m, reach == 0);
  const Distances distances(graph);
  for (int r = 0; r < n; ++r) {
    for_each_bit(m.row(r), m.stride(), [&](int c) {
      const int apart = distances(r, c) - std::min(reach, n);
      bound.raise({apart, apart});
    });
  }
  if (reach > 0) return bound;
  for (const Block& block : blocks_of(with_diagonal(m))) {
    for (const int a : block.rows) {
      for (const int b : block.rows) bound.count = std::max(bound.count, distances(a, b));
    }
  }
  if (n <= most_cut_wires) {
    for (const Cuts& cuts : cuts_of_graph(graph, distances)) {
      bound.raise(bound_of_cuts(cuts, across_in(m)));
    }
  }
  return bound;
}

LowerBound bound_of_gathering(const std::vector<int>& wires, const Distances* distances, int n) {
  const auto weight = static_cast<int>(wires.size());
  LowerBound bound{weight - 1, layers_to_spread(weight)};
  if (distances == nullptr) return bound;
  int radius = n;
  for (int v = 0; v < n; ++v) {
    int farthest = 0;
    for (const int w : wires) farthest = std::max(farthest, (*distances)(v, w));
    radius = std::min(radius, farthest);
  }
  bound.raise({0, radius});
  for (const int v : wires) {
    for (const int w : wires) bound.raise({(*distances)(v, w), 0});
  }
  return bound;
}

}  // namespace zelt::braidwerk::internal
