#include "zeltbraidwerk/phase/search/internal/parity_start.h"

#include <numeric>
#include <utility>

#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/linear/internal/closing.h"
#include "zeltbraidwerk/linear/internal/elimination.h"
#include "zeltbraidwerk/linear/internal/row_column.h"
#include "zeltbraidwerk/linear/search/internal/reduction.h"
#include "zeltbraidwerk/phase/internal/graph_walk.h"
#include "zeltbraidwerk/phase/internal/greedy_network.h"

namespace zelt::braidwerk::internal {

namespace {

Draw draws_of(Rng& rng) {
  return [&rng](int first, int last) { return first + rng.below(last - first + 1); };
}

BitMatrix map_of(const Network& network, int n) {
  BitMatrix map = BitMatrix::identity(n);
  for (const Gate& gate : network) map.add_row(wire_of(gate.a), wire_of(gate.b));
  return map;
}

void append(const structures::CnotCircuit& circuit, Network& network) {
  for (const auto& [control, target] : circuit.gates) network.push_back(cnot(control, target));
}

Network cnots_of(const std::vector<PhaseStep>& steps) {
  Network network;
  for (const PhaseStep& step : steps) {
    if (step.is_cnot()) network.push_back(cnot(step.control, step.target));
  }
  return network;
}

GateList with_outputs(Network network, const std::vector<int>& perm) {
  GateList list(static_cast<int>(perm.size()), std::move(network));
  for (std::size_t r = 0; r < perm.size(); ++r) {
    for (int label = 0; label < 4; ++label) {
      list.origin[end_of(perm[r], label)] = end_of(static_cast<int>(r), label);
    }
  }
  return list;
}

/// The weights at which sums over rows and columns are best, found on random maps.
ReductionCost reduction_cost(int n) {
  if (n <= 20) return {.exponent = n <= 12 ? 0.0 : -0.5, .with_inverse = true};
  return {.exponent = n < 40 ? -0.5 : -n / 25.0, .focus = n < 200 ? 0 : 8};
}

}  // namespace

std::vector<Network> grow_networks(const BitMatrix& parities, const GrowthCost& cost,
                                   const BeamOptions& options, Rng& rng, Meter& meter) {
  Growth growth(parities.rows(), parities.cols(), cost);
  BeamSearch<Growth> beam(growth, options, rng, meter);
  std::vector<Network> networks;
  for (const Finished<Growth>& finished : beam.run(growth.start(parities))) {
    Network& network = networks.emplace_back();
    for (const GrowthMove& move : finished.moves) {
      network.push_back(cnot(move.control, move.target));
    }
  }
  return networks;
}

Network plain_network(const BitMatrix& parities, const BitGraph* graph, Rng& rng) {
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

std::optional<GateList> closed_freely(const Network& network, int n, int width, Rng& rng,
                                      Meter& meter) {
  Reduction reduction(n, reduction_cost(n));
  BeamSearch<Reduction> beam(reduction, {.width = width, .noise = 1e-4}, rng, meter);
  const auto finished = beam.run(reduction.start(inverse(map_of(network, n))));
  if (finished.empty()) return std::nullopt;
  GateList closing = reduction.circuit(finished[0].state, finished[0].moves);
  closing.gates.insert(closing.gates.begin(), network.begin(), network.end());
  return closing;
}

GateList closed_plainly(const Network& network, int n, const BitGraph* graph, bool free, Rng& rng) {
  const BitMatrix undone = inverse(map_of(network, n));
  FreeCircuit closing(n);
  if (graph != nullptr) {
    row_column_synthesis(undone, *graph, {free, 0}, draws_of(rng), Control{}, closing);
  } else {
    closing.circuit = optimized_pmh(undone);
    closing.circuit.reverse();
  }
  Network gates = network;
  append(closing.circuit, gates);
  return with_outputs(std::move(gates), closing.perm);
}

GateList in_place(const GateList& list, Rng& rng) {
  FreeCircuit found(list.wires());
  for (const Gate& gate : list.gates) found.circuit.addGate(wire_of(gate.a), wire_of(gate.b));
  for (int wire = 0; wire < list.wires(); ++wire) {
    const End origin = list.origin[end_of(wire, 0)];
    found.perm[static_cast<std::size_t>(wire_of(origin))] = wire;
  }
  Network gates;
  append(close_within_gates(found, draws_of(rng)), gates);
  return {list.wires(), std::move(gates)};
}

}  // namespace zelt::braidwerk::internal
