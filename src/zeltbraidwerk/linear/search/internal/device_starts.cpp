#include "zeltbraidwerk/linear/search/internal/device_starts.h"

#include <algorithm>

#include "zeltbraidwerk/foundations/internal/packed_table.h"
#include "zeltbraidwerk/graphs/internal/hamiltonian_path.h"
#include "zeltbraidwerk/graphs/internal/steiner_gauss.h"
#include "zeltbraidwerk/linear/internal/methods.h"
#include "zeltbraidwerk/linear/internal/row_column.h"
#include "zeltbraidwerk/linear/search/internal/map_circuits.h"
#include "zeltbraidwerk/linear/search/internal/plane_sorting.h"
#include "zeltbraidwerk/search/internal/incumbent.h"

namespace zelt::braidwerk::internal {

GateList cleared_on_device(const BitMatrix& m, const BitGraph& device, bool free,
                           const Draw& draw) {
  FreeCircuit found(std::min(m.rows(), device.size()));
  row_column_synthesis(m, device, {.free = free}, draw, Control{}, found);
  return gate_list(found);
}

std::vector<int> path_through(const BitGraph& device, int operations) {
  Control few;
  few.max_operations = operations;
  return find_hamiltonian_path(device, few).path;
}

std::optional<GateList> cleared_along_path(const BitMatrix& m, const BitGraph& device,
                                           int operations, const Draw& draw) {
  const std::vector<int> path = path_through(device, operations);
  if (path.empty()) return std::nullopt;
  const int n = std::min(m.rows(), device.size());
  structures::Graph graph(n);
  device.unpack_into(graph);
  structures::CnotCircuit circuit(n);
  for (const auto& [control, target] : steiner_gauss_ham_path(unpack_table(m), graph, path, draw)) {
    circuit.gates.emplace_back(control, target);
  }
  circuit.reverse();
  return gate_list(circuit);
}

std::optional<GateList> sorted_by_planes(const BitMatrix& m, bool inverted,
                                         const std::vector<int>& path, int width, Rng& rng,
                                         Meter& meter) {
  const BitMatrix back = inverse(m);
  const BitMatrix& faced = inverted ? back : m;
  const BitMatrix dual = (inverted ? m : back).transposed();
  const int n = m.rows();
  BitMatrix planes(2 * n, 2 * n);
  for (int place = 0; place < n; ++place) {
    for (int input = 0; input < n; ++input) {
      const int row = path[static_cast<std::size_t>(place)];
      const int column = path[static_cast<std::size_t>(input)];
      planes.set(2 * place, 2 * input, dual.get(row, column));
      planes.set(2 * place + 1, 2 * input + 1, faced.get(row, column));
    }
  }
  const auto gates = sort_planes(planes, PlaneGates::cnots, Objective::depth, width, rng, meter);
  if (!gates) return std::nullopt;
  // They reduce the matrix by additions of rows: in this order, a circuit of its inverse.
  structures::CnotCircuit circuit(n);
  for (const auto& [place, a, b] : *gates) {
    const int one = path[static_cast<std::size_t>(place)];
    const int other = path[static_cast<std::size_t>(place) + 1];
    if (a == label_z) {
      circuit.gates.emplace_back(one, other);
    } else {
      circuit.gates.emplace_back(other, one);
    }
  }
  if (!inverted) circuit.reverse();
  return gate_list(circuit);
}

std::optional<GateList> sorted_along_path(const BitMatrix& m, const BitGraph& device,
                                          int operations, const Control& control) {
  const std::vector<int> path = path_through(device, operations);
  if (path.empty()) return std::nullopt;
  const DeviceRuns runs{m, device, DeviceRuns::Method::sorting, path, true, 0};
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
