#include "zeltbraidwerk/pauli/search_synthesis.h"

#include <optional>
#include <stdexcept>
#include <utility>

#include "zeltbraidwerk/pauli/search/internal/network_search.h"

namespace synthesis {

using namespace zelt::braidwerk::internal;

std::vector<structures::Gate> search_pauli_synthesis(
    int n, const PauliTable& table, const std::vector<structures::Parameter>& params, bool in_order,
    std::vector<int>& wires, bool in_place, const SearchEffort& effort,
    const structures::Graph* device) {
  for (const auto& row : table) {
    if (static_cast<int>(row.size()) != n) {
      throw std::invalid_argument("A Pauli string does not have a letter for each qubit");
    }
  }
  std::optional<BitGraph> edges;
  if (device != nullptr) edges.emplace(*device);
  NetworkTask task;
  task.in_order = in_order;
  task.outputs = in_place ? Outputs::in_place : Outputs::anywhere;
  task.device = edges ? &*edges : nullptr;
  task.seed = effort.seed;
  task.stream = effort.stream;
  NetworkResult found =
      search_network({PauliFrame::pack(table, n), params}, task, limits_of(effort));
  wires = std::move(found.wires);
  return std::move(found.gates);
}

}  // namespace synthesis
