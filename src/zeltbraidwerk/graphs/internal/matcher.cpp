#include "zeltbraidwerk/graphs/internal/matcher.h"

#include <lemon/list_graph.h>
#include <lemon/matching.h>

#include <algorithm>
#include <cstddef>

#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {
namespace {

/// A place where the solver can be stopped, at one of many passes.
inline void look() {
  static constexpr unsigned passes_per_look = 4096;
  static thread_local unsigned passes = 0;
  if (++passes % passes_per_look == 0) stop_point();
}

/// An iterator of a graph that looks at each step. Of a million edges every step waits for memory.
template <class Iterator>
struct Looking : Iterator {
  using Iterator::Iterator;
  Looking& operator++() {
    look();
    Iterator::operator++();
    return *this;
  }
};

struct Graph : lemon::ListGraph {
  using ArcIt = Looking<lemon::ListGraph::ArcIt>;
  using EdgeIt = Looking<lemon::ListGraph::EdgeIt>;
};

/// Edge numbers of a graph that never lost an edge count up in the order of adding. The solver
/// reads weights all the time.
struct EdgeWeights {
  using Key = Graph::Edge;
  using Value = int;
  std::vector<int> values;
  int operator[](const Key& edge) const {
    look();
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
