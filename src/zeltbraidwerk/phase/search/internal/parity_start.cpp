#include "zeltbraidwerk/phase/search/internal/parity_start.h"

#include <utility>

#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/linear/internal/closing.h"
#include "zeltbraidwerk/linear/internal/elimination.h"
#include "zeltbraidwerk/linear/internal/row_column.h"
#include "zeltbraidwerk/linear/search/internal/device_elimination.h"
#include "zeltbraidwerk/linear/search/internal/map_circuits.h"
#include "zeltbraidwerk/linear/search/internal/reduction.h"
#include "zeltbraidwerk/linear/search/internal/tuning.h"
#include "zeltbraidwerk/phase/internal/graph_walk.h"
#include "zeltbraidwerk/phase/internal/greedy_network.h"
#include "zeltbraidwerk/phase/search/internal/tuning.h"

namespace zelt::braidwerk::internal {

namespace {

Draw draws_of(Rng& rng) {
  return [&rng](int first, int last) { return first + rng.below(last - first + 1); };
}

BitMatrix map_of(const ParityNetwork& network, int n) {
  BitMatrix map = BitMatrix::identity(n);
  for (const Gate& gate : network) map.add_row(wire_of(gate.a), wire_of(gate.b));
  return map;
}

void append(const structures::CnotCircuit& circuit, ParityNetwork& network) {
  for (const auto& [control, target] : circuit.gates) network.push_back(cnot(control, target));
}

ParityNetwork cnots_of(const std::vector<PhaseStep>& steps) {
  ParityNetwork network;
  for (const PhaseStep& step : steps) {
    if (step.is_cnot()) network.push_back(cnot(step.control, step.target));
  }
  return network;
}

}  // namespace

std::vector<ParityNetwork> grow_networks(const BitMatrix& parities, const BitGraph* graph,
                                         const GrowthCost& cost, const BeamOptions& options,
                                         Rng& rng, Meter& meter) {
  Growth growth(parities.rows(), parities.cols(), cost, graph);
  BeamSearch<Growth> beam(growth, options, rng, meter);
  std::vector<ParityNetwork> networks;
  for (const Finished<Growth>& finished : beam.run(growth.start(parities))) {
    ParityNetwork& network = networks.emplace_back();
    for (const GrowthMove& move : finished.moves) {
      network.push_back(cnot(move.control, move.target));
    }
  }
  return networks;
}

ParityNetwork plain_network(const BitMatrix& parities, const BitGraph* graph, Rng& rng) {
  if (graph == nullptr) return cnots_of(*greedy_network(parities, {}, draws_of(rng), Control{}));
  structures::Graph device(parities.rows());
  graph->unpack_into(device);
  VertexSet rows(parities.rows());
  for (int v = 0; v < parities.rows(); ++v) rows.insert(v);
  Columns columns = all_columns(parities.cols());
  GraphWalk walk(device, parities);
  walk.reduce(columns);
  walk.base_step(columns, rows);
  return cnots_of(walk.steps());
}

std::optional<GateList> closed(const ParityNetwork& network, int n, const BitGraph* graph,
                               int width, Rng& rng, Meter& meter) {
  const BitMatrix undone = inverse(map_of(network, n));
  GateList closing;
  if (graph != nullptr) {
    const DeviceEliminationOptions options{
        .width = width, .vertices = device_vertices(n), .clearings = device_clearings(n)};
    auto found = eliminate_on_device(undone, *graph, options, rng, meter);
    if (found.empty()) return std::nullopt;
    closing = std::move(found.front());
  } else {
    Reduction reduction(n, closing_cost(n));
    const BeamOptions options{.width = width, .noise = parity_tuning.closing_noise};
    BeamSearch<Reduction> beam(reduction, options, rng, meter);
    const auto found = beam.run(reduction.start(undone));
    if (found.empty()) return std::nullopt;
    closing = reduction.circuit(found[0].state, found[0].moves);
  }
  closing.gates.insert(closing.gates.begin(), network.begin(), network.end());
  return closing;
}

GateList closed_plainly(const ParityNetwork& network, int n, const BitGraph* graph, Rng& rng) {
  const BitMatrix undone = inverse(map_of(network, n));
  FreeCircuit closing(n);
  if (graph != nullptr) {
    row_column_synthesis(undone, *graph, {}, draws_of(rng), Control{}, closing);
  } else {
    closing.circuit = optimized_pmh(undone);
    closing.circuit.reverse();
  }
  ParityNetwork gates = network;
  append(closing.circuit, gates);
  return {n, std::move(gates)};
}

GateList in_place(const GateList& list, Rng& rng) {
  ParityNetwork gates;
  append(close_within_gates(free_circuit(list), draws_of(rng)), gates);
  return {list.wires(), std::move(gates)};
}

}  // namespace zelt::braidwerk::internal
