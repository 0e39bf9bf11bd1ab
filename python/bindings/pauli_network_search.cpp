#include <nanobind/stl/optional.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "convert.h"
#include "module.h"
#include "operations.h"
#include "search.h"
#include "zeltbraidwerk/pauli/search/internal/network_search.h"

/// \file
/// What pauli.synthesize stands on for its method "search". A run is a stream of a seed.
namespace zelt::braidwerk::python {

using nb::literals::operator""_a;

void bind_pauli_network_search(nb::module_& m) {
  m.def(
      "_search_network",
      [](const Letters& letters, bool in_order, int tail, const ArrayLike& adjacency, bool by_depth,
         std::uint64_t seed, int run, std::optional<std::uint64_t> steps,
         SearchControl& control) -> std::tuple<Operations, std::vector<int>, int, int> {
        const internal::BitGraph graph = to_graph(adjacency);
        internal::NetworkTask task;
        task.objective = by_depth ? internal::Objective::depth : internal::Objective::count;
        task.outputs = tail == 0   ? internal::Outputs::left_open
                       : tail == 1 ? internal::Outputs::in_place
                                   : internal::Outputs::anywhere;
        task.in_order = in_order;
        task.device = graph.size() > 0 ? &graph : nullptr;
        task.seed = seed;
        task.stream = static_cast<std::uint64_t>(run);
        internal::Rotations rotations{
            internal::PauliFrame::pack(to_strings(letters), static_cast<int>(letters.shape(1))),
            {}};
        for (int r = 0; r < rotations.frame.rows(); ++r) rotations.params.push_back(placeholder(r));
        auto found = unlocked(
            [&] { return internal::search_network(rotations, task, control.effort(steps)); });
        return {to_operations(found.gates), std::move(found.wires), found.count, found.depth};
      },
      "letters"_a, "in_order"_a, "tail"_a, "adjacency"_a, "by_depth"_a, "seed"_a, "run"_a,
      "steps"_a.none(), "control"_a);
}

}  // namespace zelt::braidwerk::python
