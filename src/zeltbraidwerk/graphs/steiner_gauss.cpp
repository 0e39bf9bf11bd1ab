#include "zeltbraidwerk/graphs/steiner_gauss.h"

#include <algorithm>
#include <iostream>
#include <stdexcept>
#include <utility>

#include "zeltbraidwerk/foundations/internal/packed_table.h"
#include "zeltbraidwerk/foundations/random.h"
#include "zeltbraidwerk/graphs/internal/descending_tree.h"
#include "zeltbraidwerk/graphs/internal/path_tree.h"
#include "zeltbraidwerk/graphs/internal/steiner_gauss.h"
#include "zeltbraidwerk/graphs/internal/steiner_tree.h"

namespace zelt::braidwerk::internal {
namespace {

using structures::Graph;
using structures::Table;

/// The elimination. Rows and columns of the matrix are positions on the path, everything else is
/// vertices.
struct Elimination {
  BitMatrix matrix;
  const BitGraph graph;
  std::span<const int> path;
  std::vector<int> positions;
  std::vector<Cnot> gates;

  int size() const { return matrix.rows(); }
  int vertex(int position) const { return path[static_cast<std::size_t>(position)]; }
  int position(int vertex) const { return positions[static_cast<std::size_t>(vertex)]; }

  /// Sets the column along the tree, then clears it but for the root's entry.
  void clear_column(const BitGraph& tree, std::span<const int> targets, int root,
                    bool root_is_set) {
    const std::size_t before = gates.size();
    fill_tree(tree, targets, root, root_is_set, gates);
    empty_tree(tree, root, gates);
    for (std::size_t k = before; k < gates.size(); ++k) {
      matrix.add_row(position(gates[k].control), position(gates[k].target));
    }
  }

  void clear_below_diagonal(bool by_sketches, const Draw& draw) {
    ShrinkingPaths paths(graph);
    Sketches sketches;
    if (by_sketches) sketches = sketch_vertices(paths, draw_seed_sets(size(), draw));
    std::vector<int> targets;
    for (int i = 0; i < size(); ++i) {
      targets.assign(1, vertex(i));
      for (int j = i + 1; j < size(); ++j) {
        if (matrix.get(j, i)) targets.push_back(vertex(j));
      }
      const SteinerTree tree = by_sketches
                                   ? join_at_seed(paths, sketches, targets).value_or(SteinerTree())
                                   : grow_steiner_tree(paths, targets);
      clear_column(tree.edges, targets, vertex(i), matrix.get(i, i));
      paths.disconnect(vertex(i));
    }
  }

  void clear_above_diagonal() {
    std::vector<int> targets;
    for (int i = size() - 1; i >= 0; --i) {
      targets.clear();
      for (int j = 0; j < i; ++j) {
        if (matrix.get(j, i)) targets.push_back(vertex(j));
      }
      targets.push_back(vertex(i));
      const BitGraph tree = shortcut_ham_path(graph, path, positions, targets, vertex(i));
      clear_column(tree, targets, vertex(i), true);
    }
  }
};

[[noreturn]] void abort_with(const char* complaint, const BitMatrix& matrix) {
  std::cerr << complaint << std::endl << unpack_table(matrix) << std::endl;
  throw std::runtime_error("Aborting");
}

}  // namespace

std::vector<Cnot> steiner_gauss_ham_path(const Table& table, const Graph& graph,
                                         const std::vector<int>& path, const Draw& draw) {
  std::vector<int> positions = path_positions(path, graph.n);
  // The check lets some paths longer than n pass that miss a vertex within their first n entries.
  if (!graph.is_ham_path(path) || std::any_of(positions.begin(), positions.end(),
                                              [&](int p) { return p < 0 || p >= graph.n; })) {
    throw std::runtime_error("Path is not hamiltonian");
  }
  if (table.n != graph.n) throw std::invalid_argument("Table and graph differ in size");

  Elimination work{
      pack_table(table.permute(path)), BitGraph(graph), path, std::move(positions), {}};
  work.clear_below_diagonal(graph.sketch_mode != 0, draw);
  if (!synthesis::check_is_upper_triangular(unpack_table(work.matrix))) {
    std::cerr << "Ham path: " << path << std::endl;
    abort_with("Table is not upper triangular:", work.matrix);
  }
  work.clear_above_diagonal();
  if (!work.matrix.is_identity()) abort_with("Table is not diagonal:", work.matrix);
  return std::move(work.gates);
}

}  // namespace zelt::braidwerk::internal

namespace synthesis {

namespace internal = zelt::braidwerk::internal;

std::vector<structures::Gate> steiner_gauss_ham_path(structures::Table table,
                                                     structures::Graph& graph,
                                                     std::vector<int>& path) {
  return internal::to_gates(
      internal::steiner_gauss_ham_path(table, graph, path, zelt::braidwerk::random::uniform));
}

bool check_is_upper_triangular(const structures::Table& table) {
  const auto n = static_cast<std::size_t>(std::max(table.n, 0));
  for (std::size_t r = 0; r < n; ++r) {
    for (std::size_t c = 0; c <= r; ++c) {
      if (table.bits[r * n + c] != (r == c)) return false;
    }
  }
  return true;
}

int inverse_index(const std::vector<int>& list, int value) {
  const auto found = std::find(list.begin(), list.end(), value);
  return found == list.end() ? -1 : static_cast<int>(found - list.begin());
}

}  // namespace synthesis
