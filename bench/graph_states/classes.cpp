#include "graph_states/classes.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <unordered_map>
#include <utility>

namespace graph_states {

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

std::string SmallGraph::graph6() const {
  std::string text(1, static_cast<char>(63 + n));
  int bits = 0;
  int filled = 0;
  const auto add = [&](bool bit) {
    bits = bits << 1 | (bit ? 1 : 0);
    if (++filled < 6) return;
    text.push_back(static_cast<char>(63 + bits));
    bits = filled = 0;
  };
  for (int b = 1; b < n; ++b) {
    for (int a = 0; a < b; ++a) add(joined(a, b));
  }
  while (filled != 0) add(false);
  return text;
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

Stabilisers Stabilisers::of_zeros(int n) {
  Stabilisers zeros{n};
  for (int q = 0; q < n; ++q) zeros.z[at(q)] = static_cast<Row>(1U << q);
  return zeros;
}

void Stabilisers::apply(const PairGate& gate) {
  const auto has_x = [](int pauli) { return pauli != 3 ? 1U : 0U; };
  const auto has_z = [](int pauli) { return pauli != 1 ? 1U : 0U; };
  for (int r = 0; r < n; ++r) {
    const auto anticommutes = [&](int q, int pauli) {
      return ((x[at(r)] >> q & has_z(pauli)) ^ (z[at(r)] >> q & has_x(pauli))) & 1U;
    };
    const unsigned with_a = anticommutes(gate.a, gate.pauli_a);
    const unsigned with_b = anticommutes(gate.b, gate.pauli_b);
    x[at(r)] ^= static_cast<Row>(with_a * has_x(gate.pauli_b) << gate.b |
                                 with_b * has_x(gate.pauli_a) << gate.a);
    z[at(r)] ^= static_cast<Row>(with_a * has_z(gate.pauli_b) << gate.b |
                                 with_b * has_z(gate.pauli_a) << gate.a);
  }
}

/// Rows are reduced so that each has an X on a qubit of its own. Those that have none then are
/// products of Z on the other qubits, where H makes X of them; so they are reduced as well.
SmallGraph Stabilisers::graph() const {
  Stabilisers rows = *this;
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

/// The classes found so far, with the graphs of each.
class Classes {
 public:
  explicit Classes(int n) : n_(n) {}

  /// False when it is known.
  bool add(const Stabilisers& state, std::vector<PairGate> circuit) {
    const std::uint64_t key = canonical_key(state.graph());
    if (!class_of_.try_emplace(key, found_.size()).second) return false;
    std::vector<std::uint64_t> orbit{key};
    for (std::size_t k = 0; k < orbit.size(); ++k) {
      const SmallGraph graph = graph_of_key(orbit[k], n_);
      for (int v = 0; v < n_; ++v) {
        SmallGraph next = graph;
        next.complement_around(v);
        const std::uint64_t other = canonical_key(next);
        if (class_of_.try_emplace(other, found_.size()).second) orbit.push_back(other);
      }
    }
    const std::uint64_t best = std::ranges::min(
        orbit, {}, [&](std::uint64_t each) { return std::pair(std::popcount(each), each); });
    const int gates = static_cast<int>(circuit.size());
    found_.push_back(
        {graph_of_key(best, n_), static_cast<int>(orbit.size()), gates, std::move(circuit)});
    states_.push_back(state);
    return true;
  }

  void expand(std::size_t k) {
    for (int a = 0; a < n_; ++a) {
      for (int b = a + 1; b < n_; ++b) {
        for (int paulis = 0; paulis < 9; ++paulis) {
          const PairGate gate{a, 1 + paulis / 3, b, 1 + paulis % 3};
          Stabilisers next = states_[k];
          next.apply(gate);
          std::vector<PairGate> circuit = found_[k].circuit;
          circuit.push_back(gate);
          add(next, std::move(circuit));
        }
      }
    }
  }

  std::size_t size() const { return found_.size(); }
  std::vector<GraphClass> take() { return std::move(found_); }

 private:
  int n_;
  std::unordered_map<std::uint64_t, std::size_t> class_of_;
  std::vector<GraphClass> found_;
  std::vector<Stabilisers> states_;
};

}  // namespace

/// Classes are added in the order of their gates, since they are expanded in the order in which
/// they were added.
std::vector<GraphClass> classes(int n) {
  Classes found(n);
  found.add(Stabilisers::of_zeros(n), {});
  for (std::size_t k = 0; k < found.size(); ++k) found.expand(k);
  return found.take();
}

std::vector<std::string> lines_of_table(int n) {
  std::vector<GraphClass> found = classes(n);
  std::erase_if(found, [](const GraphClass& each) { return !each.graph.connected(); });
  std::ranges::stable_sort(
      found, {}, [](const GraphClass& each) { return std::pair(each.gates, each.graph.edges()); });
  std::vector<std::string> lines;
  for (const GraphClass& each : found) {
    std::string line = std::to_string(n) + ',' + each.graph.graph6();
    for (const int number : {each.size, each.graph.edges(), each.gates}) {
      line += ',' + std::to_string(number);
    }
    char before = ',';
    for (const auto& [a, pauli_a, b, pauli_b] : each.circuit) {
      line += before;
      line += "IXYZ"[pauli_a] + std::to_string(a) + "IXYZ"[pauli_b] + std::to_string(b);
      before = ' ';
    }
    lines.push_back(line);
  }
  return lines;
}

}  // namespace graph_states
