#include "zeltbraidwerk/linear/search/internal/device_starts.h"

#include <algorithm>

#include "zeltbraidwerk/foundations/internal/packed_table.h"
#include "zeltbraidwerk/graphs/internal/hamiltonian_path.h"
#include "zeltbraidwerk/graphs/internal/steiner_gauss.h"
#include "zeltbraidwerk/linear/internal/methods.h"
#include "zeltbraidwerk/linear/internal/row_column.h"
#include "zeltbraidwerk/linear/search/internal/map_circuits.h"
#include "zeltbraidwerk/search/internal/incumbent.h"

namespace zelt::braidwerk::internal {

GateList cleared_on_device(const BitMatrix& m, const BitGraph& device, bool free,
                           const Draw& draw) {
  FreeCircuit found(std::min(m.rows(), device.size()));
  row_column_synthesis(m, device, {.free = free}, draw, Control{}, found);
  return gate_list(found);
}

namespace {

HamiltonianSearch path_through(const BitGraph& device, int operations) {
  Control few;
  few.max_operations = operations;
  return find_hamiltonian_path(device, few);
}

}  // namespace

std::optional<GateList> cleared_along_path(const BitMatrix& m, const BitGraph& device,
                                           int operations, const Draw& draw) {
  const HamiltonianSearch walk = path_through(device, operations);
  if (walk.outcome != HamiltonianSearch::found) return std::nullopt;
  const int n = std::min(m.rows(), device.size());
  structures::Graph graph(n);
  device.unpack_into(graph);
  structures::CnotCircuit circuit(n);
  for (const auto& [control, target] :
       steiner_gauss_ham_path(unpack_table(m), graph, walk.path, draw)) {
    circuit.gates.emplace_back(control, target);
  }
  circuit.reverse();
  return gate_list(circuit);
}

std::optional<GateList> sorted_along_path(const BitMatrix& m, const BitGraph& device,
                                          int operations, const Control& control) {
  const HamiltonianSearch walk = path_through(device, operations);
  if (walk.outcome != HamiltonianSearch::found) return std::nullopt;
  const DeviceRuns runs{m, device, DeviceRuns::Method::sorting, walk.path, true, 0};
  Smallest<GateList> best(Objective::depth);
  for (int run = 0; run < plain_sorting_runs; ++run) {
    const auto found = runs.make(run, control);
    if (!found) break;
    GateList list = gate_list(*found);
    best.offer(list, size_of(list));
  }
  return best.empty() ? std::nullopt : std::optional(best.circuit());
}

}  // namespace zelt::braidwerk::internal
