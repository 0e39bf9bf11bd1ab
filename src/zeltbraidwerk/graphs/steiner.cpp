#include "zeltbraidwerk/graphs/steiner.h"

#include <bit>

#include "zeltbraidwerk/foundations/random.h"
#include "zeltbraidwerk/graphs/internal/steiner_tree.h"

namespace zelt::braidwerk::internal {

std::set<int> draw_seed_set(int n, int size, const Draw& draw) {
  std::set<int> seeds;
  if (n < 1) return seeds;
  for (int k = 0; k < size; ++k) seeds.insert(draw(0, n - 1));
  return seeds;
}

std::vector<std::set<int>> draw_seed_sets(int n, const Draw& draw) {
  std::vector<std::set<int>> sets;
  if (n < 1) return sets;
  const int count = static_cast<int>(std::bit_width(static_cast<unsigned>(n))) - 1;
  for (int k = 0; k < count; ++k) sets.push_back(draw_seed_set(n, 1 << k, draw));
  return sets;
}

const structures::Graph& cached_tree(structures::Graph& graph, std::vector<int>& terminals) {
  const auto known = graph.steiner_cache.find(terminals);
  if (known != graph.steiner_cache.end()) return known->second;
  const auto build = graph.sketch_mode != 0 ? structures::sketch_steiner : structures::steiner_good;
  return graph.steiner_cache.emplace(terminals, build(graph, terminals)).first->second;
}

}  // namespace zelt::braidwerk::internal

namespace structures {

namespace internal = zelt::braidwerk::internal;

namespace {

/// The builders' view of Graph::shortest_paths.
struct TablePaths {
  const Graph& graph;

  int size() const { return graph.n; }
  const std::vector<int>& path(int from, int to) const {
    return graph.shortest_paths.at(static_cast<std::size_t>(from)).at(static_cast<std::size_t>(to));
  }
  int length(int from, int to) const { return static_cast<int>(path(from, to).size()); }
  template <class F>
  void walk(int from, int to, F&& f) const {
    for (const int v : path(from, to)) f(v);
  }
};

Graph to_graph(const internal::SteinerTree& tree) {
  Graph result;
  result.n = tree.edges.size();
  result.adjacency.resize(static_cast<std::size_t>(result.n) * static_cast<std::size_t>(result.n));
  tree.edges.unpack_into(result);
  tree.vertices.for_each([&](int v) { result.vertices.insert(result.vertices.end(), v); });
  return result;
}

}  // namespace

Graph steiner_good(Graph& g, std::vector<int>& terminals) {
  TablePaths paths{g};
  return to_graph(internal::grow_steiner_tree(paths, terminals));
}

Graph sketch_steiner(Graph& g, std::vector<int>& terminals) {
  if (g.sketches.empty()) g.initialize_sketches();
  TablePaths paths{g};
  const auto tree = internal::join_at_seed(paths, g.sketches, terminals);
  return tree ? to_graph(*tree) : Graph();
}

std::set<int> get_seed_set(int n, int size) {
  return internal::draw_seed_set(n, size, zelt::braidwerk::random::uniform);
}

std::vector<std::set<int>> get_seed_sets(int n) {
  return internal::draw_seed_sets(n, zelt::braidwerk::random::uniform);
}

std::vector<std::set<int>> build_sketches(const std::vector<std::set<int>>& seed_sets, Graph& g) {
  TablePaths paths{g};
  return internal::sketch_vertices(paths, seed_sets);
}

void Graph::initialize_sketches() {
  sketches = build_sketches(get_seed_sets(n), *this);
}

Graph Graph::steiner_tree(std::vector<int>& terminals) {
  return internal::cached_tree(*this, terminals);
}

}  // namespace structures
