#include "zeltbraidwerk/graphs/internal/matcher.h"

#include <lemon/list_graph.h>
#include <lemon/matching.h>

#include <algorithm>
#include <cstddef>

#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {
namespace {

using Graph = lemon::ListGraph;

/// Edge numbers of a graph that never lost an edge count up in the order of adding. The solver
/// reads weights all the time, so that here is where it can be stopped.
struct EdgeWeights {
  using Key = Graph::Edge;
  using Value = int;
  static constexpr unsigned reads_per_look = 4096;
  std::vector<int> values;
  mutable unsigned reads = 0;
  int operator[](const Key& edge) const {
    if (++reads % reads_per_look == 0) stop_point();
    return values[static_cast<std::size_t>(Graph::id(edge))];
  }
};

}  // namespace

struct Matcher::Problem {
  int size;
  Graph graph;
  EdgeWeights weights;
};

Matcher::Matcher(int size) : problem_(std::make_unique<Problem>()) {
  Graph& graph = problem_->graph;
  const int n = problem_->size = std::max(size, 0);
  const int edges = n * (n + 1) / 2;
  graph.reserveNode(n);
  graph.reserveEdge(edges);
  for (int i = 0; i < n; ++i) graph.addNode();
  for (int i = 0; i < n; ++i) {
    stop_point();
    for (int j = i; j < n; ++j) graph.addEdge(Graph::nodeFromId(i), Graph::nodeFromId(j));
  }
  problem_->weights.values.resize(static_cast<std::size_t>(edges));
}

Matcher::~Matcher() = default;
Matcher::Matcher(Matcher&&) noexcept = default;
Matcher& Matcher::operator=(Matcher&&) noexcept = default;

int Matcher::size() const {
  return problem_->size;
}

std::vector<int>& Matcher::weights() {
  return problem_->weights.values;
}

int Matcher::run(std::vector<std::tuple<int, int>>& matching) {
  const Graph& graph = problem_->graph;
  lemon::MaxWeightedMatching<Graph, EdgeWeights> solver(graph, problem_->weights);
  solver.run();
  for (Graph::EdgeIt edge(graph); edge != lemon::INVALID; ++edge) {
    if (solver.matching(edge)) {
      matching.emplace_back(Graph::id(graph.u(edge)), Graph::id(graph.v(edge)));
    }
  }
  return solver.matchingWeight();
}

}  // namespace zelt::braidwerk::internal
