#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "support/oracles.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/table.h"
#include "zeltbraidwerk/graphs/graph.h"

/// \file
/// Device graphs to test on.

namespace support {

using Edges = std::vector<std::pair<int, int>>;

inline structures::Graph graph(int n, const Edges& edges) {
  structures::Graph g(n);
  for (const auto& [i, j] : edges) g.add_edge(i, j);
  return g;
}

/// The vertices one after the other, closed to a ring on demand.
inline structures::Graph line(int n, bool ring = false) {
  structures::Graph g(n);
  for (int v = 1; v < n; ++v) g.add_edge(v - 1, v);
  if (ring) g.add_edge(n - 1, 0);
  return g;
}

inline structures::Graph star(int n) {
  structures::Graph g(n);
  for (int v = 1; v < n; ++v) g.add_edge(0, v);
  return g;
}

/// A grid numbered along a snake, so that 0, 1, 2, ... is a Hamiltonian path.
inline structures::Graph grid(int width, int height) {
  structures::Graph g = line(width * height);
  for (int y = 1; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      g.add_edge((y - 1) * width + (y % 2 == 1 ? x : width - 1 - x),
                 y * width + (y % 2 == 0 ? x : width - 1 - x));
    }
  }
  return g;
}

/// Each edge with a chance of `percent`, on a graph that starts as `g`.
inline structures::Graph with_random_edges(structures::Graph g, unsigned percent, Rng& rng) {
  for (int i = 0; i < g.n; ++i) {
    for (int j = i + 1; j < g.n; ++j) {
      if (rng() % 100 < percent) g.add_edge(i, j);
    }
  }
  return g;
}

/// 0 to n - 1 in random order.
inline std::vector<int> shuffled(int n, Rng& rng) {
  std::vector<int> order(at(n));
  for (int v = 0; v < n; ++v) order[at(v)] = v;
  std::shuffle(order.begin(), order.end(), rng);
  return order;
}

/// Connected: a random tree and random edges. Where `path` is given it is a line instead, in the
/// order that `path` is set to.
inline structures::Graph random_device(int n, unsigned percent, Rng& rng,
                                       std::vector<int>* path = nullptr) {
  structures::Graph g(n);
  const std::vector<int> order = shuffled(n, rng);
  for (int v = 1; v < n; ++v) {
    g.add_edge(order[at(path != nullptr ? v - 1 : static_cast<int>(rng() % at(v)))], order[at(v)]);
  }
  if (path != nullptr) *path = order;
  return with_random_edges(std::move(g), percent, rng);
}

inline std::string show(const std::vector<int>& list) {
  std::string text;
  for (const int v : list) text += (text.empty() ? "" : " ") + std::to_string(v);
  return text;
}

inline std::string show(const Edges& edges) {
  std::string text;
  for (const auto& [i, j] : edges) {
    text += (text.empty() ? "" : " ") + std::to_string(i) + '-' + std::to_string(j);
  }
  return text;
}

/// "CNOT 0 1, PH 2": names and qubits.
inline std::string show(const std::vector<structures::Gate>& gates) {
  std::string text;
  for (const structures::Gate& gate : gates) {
    text += (text.empty() ? "" : ", ") + gate.name + ' ' + show(gate.qbits);
  }
  return text;
}

/// The trees in the graph's cache: terminals, vertices and edges of each.
inline std::string cached_trees(const structures::Graph& graph) {
  std::string text;
  for (const auto& [terminals, tree] : graph.steiner_cache) {
    const std::vector<int> vertices(tree.vertices.begin(), tree.vertices.end());
    text += show(terminals) + ": " + show(vertices) + ", " + show(tree.edges()) + '\n';
  }
  return text;
}

/// Whether every CNOT joins neighbours.
inline bool runs_on(const structures::Graph& device, const std::vector<structures::Gate>& gates) {
  return std::all_of(gates.begin(), gates.end(), [&](const structures::Gate& gate) {
    return gate.name != "CNOT" || device.are_neighbors(gate.qbits[0], gate.qbits[1]);
  });
}

/// Whether the CNOTs, all on edges, reduce m to the identity.
inline bool reduces_on(const structures::Graph& device, const std::vector<structures::Gate>& cnots,
                       BoolMatrix m) {
  for (const structures::Gate& gate : cnots) add_row(m, gate.qbits[0], gate.qbits[1]);
  return m == identity(device.n) && runs_on(device, cnots);
}

inline structures::Table table(const BoolMatrix& m) {
  structures::Table result(static_cast<int>(m.size()));
  for (std::size_t r = 0; r < m.size(); ++r) {
    for (std::size_t c = 0; c < m.size(); ++c) result.bits[r * m.size() + c] = m[r][c];
  }
  return result;
}

}  // namespace support
