#include "zeltbraidwerk/clifford/search_synthesis.h"

#include <numeric>
#include <optional>
#include <utility>

#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/clifford/search/internal/search.h"
#include "zeltbraidwerk/clifford/search/internal/state_search.h"

namespace synthesis {

using namespace zelt::braidwerk::internal;

std::vector<structures::Gate> search_clifford_synthesis(const structures::OperatorTableau& tableau,
                                                        std::vector<int>& wires, bool in_place,
                                                        const SearchEffort& effort,
                                                        const structures::Graph* device) {
  std::optional<BitGraph> edges;
  if (device != nullptr) {
    edges.emplace(*device);
    require_connected(*edges, tableau.nbqbits);
  }
  Task task;
  task.outputs = in_place ? Outputs::in_place : Outputs::anywhere;
  task.seed = effort.seed;
  task.stream = effort.stream;
  task.device = edges ? &*edges : nullptr;
  CliffordCircuit found = search_clifford(images_under(tableau), task, limits_of(effort)).circuit;
  wires = std::move(found.wires);
  return std::move(found.gates);
}

std::vector<structures::Gate> search_state_synthesis(const structures::OperatorTableau& tableau,
                                                     const SearchEffort& effort) {
  std::vector<int> images_of_z(static_cast<std::size_t>(tableau.nbqbits));
  std::iota(images_of_z.begin(), images_of_z.end(), tableau.nbqbits);
  const Task task{.seed = effort.seed, .stream = effort.stream};
  return search_state(images_under(tableau).select(images_of_z), task, limits_of(effort)).gates;
}

}  // namespace synthesis
