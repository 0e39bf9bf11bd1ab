#include "zeltbraidwerk/phase/search_synthesis.h"

#include <optional>
#include <utility>

#include "zeltbraidwerk/phase/search/internal/parity_search.h"

namespace synthesis {

using namespace zelt::braidwerk::internal;

std::vector<structures::Gate> search_phase_synthesis(const PhasePolynomial& poly,
                                                     std::vector<int>& wires, bool in_place,
                                                     const SearchEffort& effort,
                                                     const structures::Graph* device) {
  const int n = poly.empty() ? 0 : static_cast<int>(poly.begin()->first.size());
  std::optional<BitGraph> edges;
  if (device != nullptr) {
    edges.emplace(*device);
    if (!poly.empty()) require_connected(*edges, n);
  }
  Task task;
  task.outputs = in_place ? Outputs::in_place : Outputs::anywhere;
  task.device = edges && n > 0 ? &*edges : nullptr;
  task.seed = effort.seed;
  task.stream = effort.stream;
  ParitySearchResult found = search_parities(pack_parities(poly, n), task, limits_of(effort));
  wires = std::move(found.permutation);
  std::vector<structures::Gate> circuit;
  append_gates(found.steps, angles(poly), circuit);
  return circuit;
}

}  // namespace synthesis
