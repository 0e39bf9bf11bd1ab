#include "zeltbraidwerk/phase/internal/methods.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "zeltbraidwerk/linear/internal/closing.h"
#include "zeltbraidwerk/linear/internal/elimination.h"
#include "zeltbraidwerk/linear/internal/greedy.h"
#include "zeltbraidwerk/linear/internal/row_column.h"
#include "zeltbraidwerk/phase/internal/graph_walk.h"
#include "zeltbraidwerk/phase/internal/gray_synth.h"
#include "zeltbraidwerk/phase/internal/greedy_network.h"

namespace zelt::braidwerk::internal {

using structures::CnotCircuit;

CnotCircuit ClosedNetwork::cnots() const {
  CnotCircuit all(closing.circuit.nbqbits);
  for (const PhaseStep& step : steps) {
    if (step.is_cnot()) all.gates.emplace_back(step.control, step.target);
  }
  all.gates.insert(all.gates.end(), closing.circuit.gates.begin(), closing.circuit.gates.end());
  return all;
}

std::optional<ClosedNetwork> PhaseRuns::make(int run, const RunControl& control) const {
  SeededDraw engine(seed, static_cast<std::uint32_t>(run));
  const Draw draw = std::ref(engine);
  auto steps = network(run, draw, control.control(qubits()));
  if (!steps) return std::nullopt;
  ClosedNetwork made{std::move(*steps), FreeCircuit(qubits())};
  if (outputs == Outputs::left_open) return made;
  auto closing = closed_by(inverse(linear_map(made.steps, qubits())), draw,
                           control.control_of_run(qubits(), run));
  if (!closing) return std::nullopt;
  made.closing = std::move(*closing);
  return made;
}

std::optional<std::vector<PhaseStep>> PhaseRuns::network(int run, const Draw& draw,
                                                         const Control& control) const {
  if (greedy) {
    // Sets without structure want the map left out, those of adders and multipliers the most of
    // it; which one it is shows in the runs.
    constexpr double shares[] = {0.0003, 0, 0.001, 0.01};
    GreedyNetworkOptions options;
    if (run > 0) options.decay = 0.01 * draw(35, 95);
    if (outputs != Outputs::left_open) options.map_share = shares[run % 4];
    return greedy_network(parities, options, draw, control);
  }
  std::vector<int> names = shuffled(qubits(), draw);
  if (run == 0) std::ranges::sort(names);
  BitMatrix table(qubits(), parities.cols());
  for (int v = 0; v < qubits(); ++v) {
    const Word* row = parities.row(names[static_cast<std::size_t>(v)]);
    std::copy_n(row, parities.stride(), table.row(v));
  }
  auto steps =
      device != nullptr ? along_device(std::move(table), names) : gray_synth(std::move(table));
  for (PhaseStep& step : steps) {
    step.target = names[static_cast<std::size_t>(step.target)];
    if (step.is_cnot()) step.control = names[static_cast<std::size_t>(step.control)];
  }
  return steps;
}

std::vector<PhaseStep> PhaseRuns::along_device(BitMatrix table,
                                               const std::vector<int>& names) const {
  structures::Graph graph(qubits());
  renamed(*device, names).unpack_into(graph);
  VertexSet rows(qubits());
  for (int v = 0; v < qubits(); ++v) rows.insert(v);
  Columns columns = all_columns(table.cols());
  GraphWalk walker(graph, std::move(table));
  walker.reduce(columns);
  walker.base_step(columns, rows);
  return walker.steps();
}

std::optional<FreeCircuit> PhaseRuns::closed_by(const BitMatrix& m, const Draw& draw,
                                                const Control& control) const {
  const bool free = outputs == Outputs::anywhere;
  FreeCircuit found(qubits());
  if (device != nullptr) {
    if (!row_column_synthesis(m, *device, {free, 0}, draw, control, found)) return std::nullopt;
    return found;
  }
  const GreedyOptions options{.cost = GreedyCost::OnesWithInverse, .beam = {1, 1}};
  GreedyResult result = greedy_synthesis(m, found.perm, options, draw, control);
  if (result.reduced) {
    found.circuit = std::move(result.circuit);
    return free ? std::move(found) : closed(std::move(found), objective, draw);
  }
  if (control.stop_requested()) return std::nullopt;
  found = FreeCircuit(optimized_pmh(m), in_order(qubits()));
  found.circuit.reverse();
  return found;
}

}  // namespace zelt::braidwerk::internal
