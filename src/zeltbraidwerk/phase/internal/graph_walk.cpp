#include "zeltbraidwerk/phase/internal/graph_walk.h"

#include <algorithm>

#include "zeltbraidwerk/foundations/internal/clones.h"
#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {
namespace {

/// For each row its number of ones on the columns.
ZELTBRAIDWERK_CLONES
void count_rows(const BitMatrix& parities, ColumnsView columns, std::span<const int> rows,
                std::span<int> counts) {
  for (std::size_t k = 0; k < rows.size(); ++k) {
    counts[k] = count_ones(columns, parities.row(rows[k]));
  }
}

/// The columns that hold exactly one wire.
Columns single_wire_columns(const BitMatrix& parities, ColumnsView columns) {
  Columns result;
  for (const auto& [word, mask] : columns) {
    Word once = 0;
    Word twice = 0;
    for (int r = 0; r < parities.rows(); ++r) {
      const Word bits = parities.row(r)[word];
      twice |= once & bits;
      once |= bits;
    }
    if (const Word single = mask & once & ~twice) result.push_back({word, single});
  }
  return result;
}

void remove_columns(Columns& columns, const Columns& served) {
  auto next = served.begin();
  for (ColumnWord& entry : columns) {
    if (next != served.end() && next->word == entry.word) entry.mask &= ~(next++)->mask;
  }
  std::erase_if(columns, [](const ColumnWord& entry) { return entry.mask == 0; });
}

/// Takes the columns with a 1 on the row out of `columns` and returns them.
Columns take_ones(Columns& columns, const Word* row) {
  Columns zeros;
  Columns ones;
  split_columns(columns, row, zeros, ones);
  columns.swap(zeros);
  return ones;
}

VertexSet without(VertexSet rows, int row) {
  if (rows.contains(row)) rows.erase(row);
  return rows;
}

std::vector<int> members(const VertexSet& set) {
  std::vector<int> result;
  set.for_each([&](int v) { result.push_back(v); });
  return result;
}

}  // namespace

GraphWalk::GraphWalk(const structures::Graph& graph, BitMatrix parities)
    : graph_(graph), vertices_(graph.n, graph.vertices), parities_(std::move(parities)) {}

void GraphWalk::place_cnot(int control, int target) {
  steps_.push_back(PhaseStep::cnot(control, target));
  parities_.add_row(target, control);
}

void GraphWalk::reduce(Columns& columns) {
  const Columns served = single_wire_columns(parities_, columns);
  for_each_column(served, [&](int column) {
    int row = 0;
    while (!parities_.get(row, column)) ++row;
    steps_.push_back(PhaseStep::phase(row, column));
  });
  remove_columns(columns, served);
}

/// The row with the greatest majority among those that may leave without cutting the rest in two,
/// of equal ones the lowest; -1 when there is none.
int GraphWalk::best_row(const Columns& columns, const VertexSet& rows) const {
  VertexSet live = rows;
  for (int w = 0; w < live.count(); ++w) live.words()[w] &= vertices_.words()[w];
  VertexSet candidates = non_cutting(graph_, live);
  if (live != rows && is_connected(graph_, live)) {
    // A row that is no vertex of the graph has no edges to cut.
    rows.for_each([&](int r) {
      if (!live.contains(r)) candidates.insert(r);
    });
  }
  const std::vector<int> list = members(candidates);
  std::vector<int> ones(list.size());
  count_rows(parities_, columns, list, ones);
  const int total = count_columns(columns);
  int best = -1;
  int best_score = -1;
  for (std::size_t k = 0; k < list.size(); ++k) {
    const int score = std::max(ones[k], total - ones[k]);
    if (score <= best_score) continue;
    best = list[k];
    best_score = score;
  }
  return best;
}

/// The target's neighbour among the rows with the most ones on the columns, of equal ones the
/// lowest, and that count; -1 when there is none.
std::pair<int, int> GraphWalk::best_neighbour(const Columns& columns, const VertexSet& rows,
                                              int target) const {
  std::vector<int> list;
  graph_.for_each_neighbour(target, [&](int k) {
    if (k != target && rows.contains(k)) list.push_back(k);
  });
  std::vector<int> ones(list.size());
  count_rows(parities_, columns, list, ones);
  const auto most = std::max_element(ones.begin(), ones.end());
  if (most == ones.end()) return {-1, 0};
  return {list[static_cast<std::size_t>(most - ones.begin())], *most};
}

void GraphWalk::base_step(Columns& columns, const VertexSet& rows) {
  if (columns.empty()) return;
  const int row = best_row(columns, rows);
  if (row < 0) return;
  Columns ones = take_ones(columns, parities_.row(row));
  base_step(columns, without(rows, row));
  ones_step(ones, rows, row);
}

void GraphWalk::ones_step(Columns& first, const VertexSet& rows, int target) {
  Columns later;
  for (Columns* columns = &first; !columns->empty();) {
    stop_point();
    const int before = count_columns(*columns);
    const auto [neighbour, count] = best_neighbour(*columns, rows, target);
    if (neighbour >= 0) {
      if (count == 0) place_cnot(neighbour, target);
      place_cnot(target, neighbour);
    }
    reduce(*columns);
    Columns ones = take_ones(*columns, parities_.row(target));
    // Without a neighbour to cancel against nothing changes any more.
    if (neighbour < 0 && count_columns(ones) == before) return;
    base_step(*columns, without(rows, target));
    later = std::move(ones);
    columns = &later;
  }
}

}  // namespace zelt::braidwerk::internal
