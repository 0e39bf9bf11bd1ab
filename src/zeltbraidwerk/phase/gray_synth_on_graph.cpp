#include "zeltbraidwerk/phase/gray_synth_on_graph.h"

#include <algorithm>
#include <stdexcept>

#include "zeltbraidwerk/foundations/internal/packed_table.h"
#include "zeltbraidwerk/phase/gray_synth.h"
#include "zeltbraidwerk/phase/internal/graph_walk.h"

namespace internal = zelt::braidwerk::internal;

using internal::Columns;
using internal::GraphWalk;
using internal::VertexSet;
using structures::Gate;
using structures::Graph;
using structures::Parameter;

namespace {

/// Runs a step of the walk between the plain containers and its own.
template <class Step>
void walk(std::set<int>& cols, const Graph& graph, std::vector<Gate>& circuit, BoolMatrix& table,
          const std::vector<Parameter>& params, Step&& step) {
  if (cols.empty() || table.empty()) return;
  GraphWalk walker(graph, internal::BitMatrix::pack(table, static_cast<int>(table.size()),
                                                    static_cast<int>(table[0].size())));
  Columns columns = internal::pack_columns(cols);
  step(walker, columns);
  cols.clear();
  internal::for_each_column(columns, [&](int col) { cols.insert(cols.end(), col); });
  walker.parities().unpack_into(table);
  std::vector<const Parameter*> angles;
  for (const Parameter& angle : params) angles.push_back(&angle);
  internal::append_gates(walker.steps(), angles, circuit);
}

}  // namespace

std::vector<Gate> gray_synth_on_graph(const PhasePolynomial& poly, Graph& graph,
                                      structures::Table& table) {
  GraphWalk walker(graph, internal::pack_parities(poly, graph.n));
  Columns columns = internal::all_columns(walker.parities().cols());
  walker.reduce(columns);
  VertexSet rows(graph.n);
  for (int v = 0; v < graph.n; ++v) rows.insert(v);
  walker.base_step(columns, rows);

  const auto& steps = walker.steps();
  const auto served = std::count_if(steps.begin(), steps.end(),
                                    [](const internal::PhaseStep& s) { return !s.is_cnot(); });
  if (static_cast<std::size_t>(served) != poly.size()) {
    throw std::invalid_argument("A parity reaches over parts of the graph that no edge joins");
  }
  table = internal::unpack_table(internal::linear_map(steps, graph.n));
  std::vector<Gate> circuit;
  internal::append_gates(steps, internal::angles(poly), circuit);
  return circuit;
}

void reduce_cols(std::set<int>& cols, std::vector<Gate>& circuit, BoolMatrix& table,
                 std::vector<Parameter>& params) {
  walk(cols, Graph(), circuit, table, params,
       [](GraphWalk& walker, Columns& columns) { walker.reduce(columns); });
}

void base_recursion_step_graph(std::set<int>& cols, std::set<int>& rows, const Graph& graph,
                               std::vector<Gate>& circuit, BoolMatrix& table,
                               std::vector<Parameter>& params) {
  walk(cols, graph, circuit, table, params, [&](GraphWalk& walker, Columns& columns) {
    walker.base_step(columns, VertexSet(graph.n, rows));
  });
}

void ones_recursion_step_graph(std::set<int>& cols, std::set<int>& rows, int target,
                               const Graph& graph, std::vector<Gate>& circuit, BoolMatrix& table,
                               std::vector<Parameter>& params) {
  walk(cols, graph, circuit, table, params, [&](GraphWalk& walker, Columns& columns) {
    walker.ones_step(columns, VertexSet(graph.n, rows), target);
  });
}
