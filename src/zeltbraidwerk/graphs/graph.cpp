#include "zeltbraidwerk/graphs/graph.h"

#include <ostream>
#include <sstream>

#include "zeltbraidwerk/graphs/internal/bit_graph.h"

namespace structures {

using zelt::braidwerk::internal::BitGraph;
using zelt::braidwerk::internal::VertexSet;

namespace {

std::size_t place(const Graph& g, int i, int j) {
  return static_cast<std::size_t>(i) * static_cast<std::size_t>(g.n) + static_cast<std::size_t>(j);
}

}  // namespace

Graph::Graph(int size) : n(size), adjacency(place(*this, size, 0)) {
  for (int v = 0; v < n; ++v) vertices.insert(vertices.end(), v);
}

Graph::Graph(const Graph& other)
    : n(other.n),
      adjacency(other.adjacency),
      weights(other.weights),
      shortest_paths(other.shortest_paths),
      vertices(other.vertices),
      sketch_mode(other.sketch_mode) {}

void Graph::add_edge(int i, int j) {
  adjacency[place(*this, i, j)] = true;
  adjacency[place(*this, j, i)] = true;
}

void Graph::add_edge(int i, int j, double w) {
  add_edge(i, j);
  if (weights.empty()) weights.resize(adjacency.size());
  weights[place(*this, i, j)] = w;
  weights[place(*this, j, i)] = w;
}

void Graph::remove_edge(int i, int j) {
  adjacency[place(*this, i, j)] = false;
  adjacency[place(*this, j, i)] = false;
}

void Graph::disconnect(int v) {
  for (int w = 0; w < n; ++w) remove_edge(v, w);
}

std::vector<int> Graph::neighbors(int i) const {
  std::vector<int> result;
  for (int j = 0; j < n; ++j) {
    if (are_neighbors(i, j)) result.push_back(j);
  }
  return result;
}

std::vector<std::pair<int, int>> Graph::edges() const {
  std::vector<std::pair<int, int>> result;
  for (int i = 0; i < n; ++i) {
    for (int j = i + 1; j < n; ++j) {
      if (are_neighbors(i, j)) result.emplace_back(i, j);
    }
  }
  return result;
}

int Graph::degree(int i) const {
  return static_cast<int>(neighbors(i).size());
}

int Graph::nb_vertices() const {
  return static_cast<int>(vertices.size());
}

bool Graph::are_neighbors(int i, int j) const {
  return i >= 0 && i < n && j >= 0 && j < n && adjacency[place(*this, i, j)];
}

bool Graph::is_connected() const {
  return zelt::braidwerk::internal::is_connected(BitGraph(*this), VertexSet(n, vertices));
}

bool Graph::is_non_cutting(int v) const {
  VertexSet others(n, vertices);
  if (others.contains(v)) others.erase(v);
  return zelt::braidwerk::internal::is_connected(BitGraph(*this), others);
}

Graph Graph::induced_subgraph(const std::set<int>& s) const {
  Graph result = *this;
  for (const int v : vertices) {
    if (s.contains(v)) continue;
    result.vertices.erase(v);
    result.disconnect(v);
  }
  return result;
}

bool Graph::is_ham_path(const std::vector<int>& path) const {
  if (n > static_cast<int>(path.size())) return false;
  if (path.empty()) return true;
  std::set<int> visited{path.back()};
  for (std::size_t k = 0; k + 1 < static_cast<std::size_t>(n); ++k) {
    if (!are_neighbors(path[k], path[k + 1])) return false;
    visited.insert(path[k]);
  }
  return visited.size() == static_cast<std::size_t>(n);
}

std::string Graph::to_string() const {
  std::ostringstream text;
  text << *this;
  return text.str();
}

std::ostream& operator<<(std::ostream& out, const Graph& graph) {
  for (int v = 0; v < graph.n; ++v) {
    const std::vector<int> neighbors = graph.neighbors(v);
    if (!neighbors.empty()) out << v << " : " << neighbors << std::endl;
  }
  return out;
}

}  // namespace structures
