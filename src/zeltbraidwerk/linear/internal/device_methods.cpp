#include <algorithm>
#include <functional>
#include <utility>

#include "zeltbraidwerk/foundations/internal/packed_table.h"
#include "zeltbraidwerk/graphs/internal/hamiltonian_path.h"
#include "zeltbraidwerk/graphs/internal/steiner_gauss.h"
#include "zeltbraidwerk/linear/internal/methods.h"
#include "zeltbraidwerk/linear/internal/path_sorting.h"
#include "zeltbraidwerk/linear/internal/row_column.h"
#include "zeltbraidwerk/search/internal/runs.h"

namespace zelt::braidwerk::internal {

std::optional<FreeCircuit> DeviceRuns::make(int run, const Control& control) const {
  SeededDraw engine(seed, static_cast<std::uint32_t>(run));
  const Draw draw = std::ref(engine);
  if (method == Method::steiner) return along_path(run, draw);
  if (method == Method::sorting) return by_sorting(run, draw, control);
  // Another facing would leave outputs that may move on wires of another numbering.
  const auto facing = in_place ? static_cast<Facing>(run % plain_runs) : Facing::plain;
  const BitMatrix faced = face(m, facing);
  if (run < plain_runs) return by_rows_and_columns(faced, device, facing, 0, draw, control);

  const std::vector<int> names = shuffled(m.rows(), draw);
  const Renaming renaming{names, names};
  auto found = by_rows_and_columns(renaming(faced), renamed(device, names), Facing::plain,
                                   run / plain_runs % 3, draw, control);
  if (found) {
    found->rename_back(renaming);
    found->face_back(facing);
  }
  return found;
}

std::optional<FreeCircuit> DeviceRuns::by_rows_and_columns(const BitMatrix& faced,
                                                           const BitGraph& on, Facing facing,
                                                           int slack, const Draw& draw,
                                                           const Control& control) const {
  FreeCircuit found(m.rows());
  if (!row_column_synthesis(faced, on, {!in_place, slack}, draw, control, found)) {
    return std::nullopt;
  }
  found.face_back(facing);
  return found;
}

FreeCircuit DeviceRuns::along_path(int run, const Draw& draw) const {
  const auto facing = static_cast<Facing>(run % plain_runs);
  std::vector<int> walk = path;
  if (run >= plain_runs) vary_hamiltonian_path(device, walk, draw);
  structures::Graph graph(device.size());
  device.unpack_into(graph);
  FreeCircuit found(m.rows());
  for (const auto& [c, t] :
       steiner_gauss_ham_path(unpack_table(face(m, facing)), graph, walk, draw)) {
    found.circuit.gates.emplace_back(c, t);
  }
  found.circuit.reverse();
  found.face_back(facing);
  return found;
}

std::optional<FreeCircuit> DeviceRuns::by_sorting(int run, const Draw& draw,
                                                  const Control& control) const {
  const auto facing = static_cast<Facing>(run % plain_runs);
  std::vector<int> walk = path;
  if (run >= plain_sorting_runs) vary_hamiltonian_path(device, walk, draw);
  if (run / plain_runs % 2 == 1) std::ranges::reverse(walk);
  auto circuit = sort_along_path(face(m, facing), walk, run / (2 * plain_runs) % 2, control);
  if (!circuit) return std::nullopt;
  FreeCircuit found(m.rows());
  found.circuit = std::move(*circuit);
  found.circuit.reverse();
  found.face_back(facing);
  return found;
}

}  // namespace zelt::braidwerk::internal
