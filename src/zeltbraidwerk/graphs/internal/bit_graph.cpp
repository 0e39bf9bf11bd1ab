#include "zeltbraidwerk/graphs/internal/bit_graph.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace zelt::braidwerk::internal {
namespace {

/// Depth-first search in which low(v) is the earliest vertex that v's branch touches. A vertex cuts
/// when a child's branch touches nothing earlier than it; the first vertex, when it has two
/// children. `order` counts from 1, 0 marks a vertex not met.
struct CutSearch {
  struct Step {
    int vertex;
    int parent;
  };

  const BitGraph& graph;
  const VertexSet& members;
  std::vector<int> order;
  std::vector<int> low;
  std::vector<Step> stack;
  VertexSet unmet;
  VertexSet cutting;
  int met = 0;
  int root_children = 0;

  CutSearch(const BitGraph& g, const VertexSet& m)
      : graph(g),
        members(m),
        order(static_cast<std::size_t>(g.size())),
        low(order),
        unmet(m),
        cutting(g.size()) {}

  int& order_of(int v) { return order[static_cast<std::size_t>(v)]; }
  int& low_of(int v) { return low[static_cast<std::size_t>(v)]; }

  void enter(int v, int parent) {
    order_of(v) = low_of(v) = ++met;
    unmet.erase(v);
    stack.push_back({v, parent});
  }

  void leave() {
    const auto [v, parent] = stack.back();
    stack.pop_back();
    graph.for_each_neighbour(v, [&](int w) {
      if (w != parent && members.contains(w)) low_of(v) = std::min(low_of(v), order_of(w));
    });
    if (parent < 0) return;
    low_of(parent) = std::min(low_of(parent), low_of(v));
    if (stack.size() == 1) {
      ++root_children;
    } else if (low_of(v) >= order_of(parent)) {
      cutting.insert(parent);
    }
  }

  void run(int root) {
    enter(root, -1);
    while (!stack.empty()) {
      const int v = stack.back().vertex;
      if (const int child = graph.first_neighbour_in(v, unmet); child >= 0) {
        enter(child, v);
      } else {
        leave();
      }
    }
    if (root_children > 1) cutting.insert(root);
  }
};

}  // namespace

namespace {

std::size_t row_start(int v, int n) {
  return static_cast<std::size_t>(v) * static_cast<std::size_t>(n);
}

}  // namespace

BitGraph::BitGraph(const structures::Graph& graph) : rows_(graph.n, graph.n) {
  for (int v = 0; v < size(); ++v) {
    pack_row(graph.adjacency, row_start(v, size()), size(), rows_.row(v));
  }
}

void BitGraph::unpack_into(structures::Graph& graph) const {
  for (int v = 0; v < size(); ++v) {
    unpack_row(row(v), row_start(v, size()), size(), graph.adjacency);
  }
}

bool is_connected(const BitGraph& graph, const VertexSet& members) {
  const int start = members.first();
  if (start < 0) return false;
  VertexSet unmet = members;
  unmet.erase(start);
  std::vector<int> open{start};
  while (!open.empty()) {
    const int v = open.back();
    open.pop_back();
    graph.meet_neighbours(v, unmet, open);
  }
  return unmet.empty();
}

void require_connected(const BitGraph& graph, int n) {
  VertexSet all(graph.size());
  for (int v = 0; v < graph.size(); ++v) all.insert(v);
  if (graph.size() != n || (n > 0 && !is_connected(graph, all))) {
    throw std::invalid_argument("device: got " + std::to_string(graph.size()) +
                                " qubits, wanted a connected graph of " + std::to_string(n));
  }
}

BitGraph renamed(const BitGraph& graph, const std::vector<int>& names) {
  BitGraph result(graph.size());
  for (int v = 0; v < graph.size(); ++v) {
    for (int w = 0; w < v; ++w) {
      if (graph.joined(names[static_cast<std::size_t>(v)], names[static_cast<std::size_t>(w)])) {
        result.join(v, w);
      }
    }
  }
  return result;
}

VertexSet non_cutting(const BitGraph& graph, const VertexSet& members) {
  VertexSet result(graph.size());
  const int start = members.first();
  if (start < 0) return result;
  CutSearch search(graph, members);
  search.run(start);
  if (search.met == 1 && search.unmet.empty()) return result;
  if (search.unmet.empty()) {
    members.for_each([&](int v) {
      if (!search.cutting.contains(v)) result.insert(v);
    });
    return result;
  }
  // In pieces already: only a vertex that stands alone beside one other piece can be missed.
  members.for_each([&](int v) {
    VertexSet others = members;
    others.erase(v);
    if (is_connected(graph, others)) result.insert(v);
  });
  return result;
}

}  // namespace zelt::braidwerk::internal
