#include "zeltbraidwerk/clifford/search/internal/graph_classes.h"

#include <algorithm>
#include <bit>
#include <unordered_set>
#include <utility>

#include "zeltbraidwerk/clifford/search/internal/graph_class_table.h"

namespace zelt::braidwerk::internal {

namespace {

using Row = std::uint16_t;

std::size_t at(int k) {
  return static_cast<std::size_t>(k);
}

/// The search for the least key. A colouring is a list of cells in order.
class Canonical {
 public:
  explicit Canonical(const SmallGraph& graph) : graph_(graph) {
    std::vector<Row> cells;
    if (graph.n > 0) cells.push_back(static_cast<Row>((1U << graph.n) - 1));
    refine(cells);
    descend(cells);
  }
  std::uint64_t key() const { return least_; }

 private:
  int degree_into(int v, Row cell) const {
    return std::popcount(static_cast<Row>(graph_.rows[at(v)] & cell));
  }

  /// Until all vertices of a cell have as many neighbours in each cell.
  void refine(std::vector<Row>& cells) const {
    for (std::size_t by = 0; by < cells.size(); ++by) {
      const Row into = cells[by];
      std::vector<Row> finer;
      for (const Row cell : cells) {
        std::array<Row, most_vertices + 1> parts{};
        for (Row left = cell; left != 0; left = static_cast<Row>(left & (left - 1))) {
          const int v = std::countr_zero(left);
          parts[at(degree_into(v, into))] |= static_cast<Row>(1U << v);
        }
        for (const Row part : parts) {
          if (part != 0) finer.push_back(part);
        }
      }
      if (finer.size() == cells.size()) continue;
      cells = std::move(finer);
      by = static_cast<std::size_t>(-1);  // from the first one again
    }
  }

  /// Vertices that an exchange of the two leaves the graph as it is.
  bool twins(int v, int w) const {
    const Row both = static_cast<Row>(1U << v | 1U << w);
    return ((graph_.rows[at(v)] ^ graph_.rows[at(w)]) & ~both) == 0;
  }

  void descend(const std::vector<Row>& cells) {
    const auto wide = std::ranges::find_if(cells, [](Row cell) { return std::popcount(cell) > 1; });
    if (wide == cells.end()) return take(cells);
    Row tried = 0;
    for (Row left = *wide; left != 0; left = static_cast<Row>(left & (left - 1))) {
      const int v = std::countr_zero(left);
      bool known = false;
      for (Row seen = tried; seen != 0; seen = static_cast<Row>(seen & (seen - 1))) {
        known = known || twins(v, std::countr_zero(seen));
      }
      tried |= static_cast<Row>(1U << v);
      if (known) continue;
      std::vector<Row> finer(cells.begin(), wide);
      finer.push_back(static_cast<Row>(1U << v));
      finer.push_back(static_cast<Row>(*wide & ~(1U << v)));
      finer.insert(finer.end(), wide + 1, cells.end());
      refine(finer);
      descend(finer);
    }
  }

  void take(const std::vector<Row>& cells) {
    std::uint64_t key = 0;
    for (std::size_t b = 1; b < cells.size(); ++b) {
      for (std::size_t a = 0; a < b; ++a) {
        key = key << 1 |
              (graph_.rows[at(std::countr_zero(cells[a]))] >> std::countr_zero(cells[b]) & 1U);
      }
    }
    least_ = std::min(least_, key);
  }

  const SmallGraph& graph_;
  std::uint64_t least_ = ~std::uint64_t{0};
};

}  // namespace

int SmallGraph::edges() const {
  int twice = 0;
  for (const Row row : rows) twice += std::popcount(row);
  return twice / 2;
}

bool SmallGraph::connected() const {
  Row reached = 1;
  for (int k = 0; k < n; ++k) {
    for (int v = 0; v < n; ++v) {
      if ((reached >> v & 1) != 0) reached |= rows[at(v)];
    }
  }
  return reached == (1U << n) - 1;
}

void SmallGraph::complement_around(int v) {
  const Row around = rows[at(v)];
  for (int w = 0; w < n; ++w) {
    if ((around >> w & 1) != 0) rows[at(w)] ^= static_cast<Row>(around & ~(1U << w));
  }
}

std::uint64_t canonical_key(const SmallGraph& graph) {
  return Canonical(graph).key();
}

SmallGraph graph_of_key(std::uint64_t key, int n) {
  SmallGraph graph{n};
  for (int b = n - 1; b > 0; --b) {
    for (int a = b - 1; a >= 0; --a, key >>= 1) {
      if ((key & 1) == 0) continue;
      graph.rows[at(a)] |= static_cast<Row>(1U << b);
      graph.rows[at(b)] |= static_cast<Row>(1U << a);
    }
  }
  return graph;
}

std::uint64_t table_entry(int n, std::uint64_t key, int gates) {
  return static_cast<std::uint64_t>(n) << 40 | key << 4 | static_cast<std::uint64_t>(gates);
}

std::vector<std::uint64_t> keys_of_orbit(const SmallGraph& graph) {
  std::vector<std::uint64_t> keys{canonical_key(graph)};
  std::unordered_set<std::uint64_t> seen{keys[0]};
  for (std::size_t k = 0; k < keys.size(); ++k) {
    const SmallGraph each = graph_of_key(keys[k], graph.n);
    for (int v = 0; v < graph.n; ++v) {
      SmallGraph next = each;
      next.complement_around(v);
      const std::uint64_t key = canonical_key(next);
      if (seen.insert(key).second) keys.push_back(key);
    }
  }
  return keys;
}

std::uint64_t representative(const std::vector<std::uint64_t>& keys) {
  return std::ranges::min(keys, {},
                          [](std::uint64_t key) { return std::pair(std::popcount(key), key); });
}

/// Rows are reduced so that each has an X on a qubit of its own. Those that have none then are
/// products of Z on the other qubits, where H makes X of them; so they are reduced as well.
SmallGraph SmallStabilisers::graph() const {
  SmallStabilisers rows = *this;
  int done = 0;
  const auto reduce = [&](int q) {
    int pivot = done;
    while (pivot < n && (rows.x[at(pivot)] >> q & 1) == 0) ++pivot;
    if (pivot == n) return false;
    std::swap(rows.x[at(pivot)], rows.x[at(done)]);
    std::swap(rows.z[at(pivot)], rows.z[at(done)]);
    for (int r = 0; r < n; ++r) {
      if (r == done || (rows.x[at(r)] >> q & 1) == 0) continue;
      rows.x[at(r)] ^= rows.x[at(done)];
      rows.z[at(r)] ^= rows.z[at(done)];
    }
    ++done;
    return true;
  };
  std::vector<int> qubit_of;  // of each row
  std::vector<int> others;
  for (int q = 0; q < n; ++q) (reduce(q) ? qubit_of : others).push_back(q);
  for (const int q : others) {
    const Row bit = static_cast<Row>(1U << q);
    for (int r = 0; r < n; ++r) {
      const Row change = static_cast<Row>((rows.x[at(r)] ^ rows.z[at(r)]) & bit);
      rows.x[at(r)] ^= change;
      rows.z[at(r)] ^= change;
    }
  }
  for (const int q : others) {
    reduce(q);
    qubit_of.push_back(q);
  }
  SmallGraph graph{n};
  for (int r = 0; r < n; ++r) {
    const int v = qubit_of[at(r)];
    graph.rows[at(v)] = static_cast<Row>(rows.z[at(r)] & ~(1U << v));
  }
  return graph;
}

namespace {

/// The vertices joined with v, directly or over others, as a graph of their own; taken out of
/// `left`.
SmallGraph part_with(int v, const SmallGraph& graph, Row& left) {
  std::vector<int> part{v};
  left &= static_cast<Row>(~(1U << v));
  for (std::size_t k = 0; k < part.size(); ++k) {
    for (Row next = graph.rows[at(part[k])] & left; next != 0;
         next = graph.rows[at(part[k])] & left) {
      part.push_back(std::countr_zero(next));
      left &= static_cast<Row>(~(1U << part.back()));
    }
  }
  SmallGraph found{static_cast<int>(part.size())};
  for (std::size_t a = 0; a < part.size(); ++a) {
    for (std::size_t b = 0; b < part.size(); ++b) {
      if (graph.joined(part[a], part[b])) found.rows[a] |= static_cast<Row>(1U << b);
    }
  }
  return found;
}

int fewest_gates_of_part(const SmallGraph& graph) {
  const std::uint64_t found = table_entry(graph.n, representative(keys_of_orbit(graph)), 0);
  return static_cast<int>(*std::ranges::lower_bound(graph_class_table, found) & 15U);
}

}  // namespace

std::optional<int> fewest_gates_of_state(const PauliFrame& stabilisers) {
  const int n = stabilisers.qubits();
  if (n > most_vertices || stabilisers.rows() != n) return std::nullopt;
  SmallStabilisers small{n};
  for (int r = 0; r < n; ++r) {
    for (int q = 0; q < n; ++q) {
      small.x[at(r)] |= static_cast<Row>(stabilisers.x_planes().get(q, r) << q);
      small.z[at(r)] |= static_cast<Row>(stabilisers.z_planes().get(q, r) << q);
    }
  }
  const SmallGraph graph = small.graph();
  int gates = 0;
  Row left = static_cast<Row>((1U << n) - 1);
  while (left != 0) {
    const SmallGraph part = part_with(std::countr_zero(left), graph, left);
    if (part.n > 1) gates += fewest_gates_of_part(part);
  }
  return gates;
}

}  // namespace zelt::braidwerk::internal
