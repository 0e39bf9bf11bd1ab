#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "convert.h"
#include "module.h"
#include "search.h"
#include "zeltbraidwerk/phase/search/internal/parity_search.h"

/// \file
/// What phase.synthesize stands on for its method "search". A run is a stream of a seed.
namespace zelt::braidwerk::python {

using nb::literals::operator""_a;

void bind_parity_search(nb::module_& m) {
  m.def(
      "_search_parities",
      [](const ArrayLike& parities, const ArrayLike& adjacency, const std::string& ending,
         bool by_depth, std::uint64_t seed, int run, std::optional<std::uint64_t> steps,
         SearchControl& control) -> std::tuple<IntArray2, std::vector<int>> {
        const BitMatrix bits = to_bits(parities, "parities");
        const internal::BitGraph graph = to_graph(adjacency);
        internal::Task task;
        task.objective = by_depth ? internal::Objective::depth : internal::Objective::count;
        task.outputs = ending == "return"  ? internal::Outputs::left_open
                       : ending == "exact" ? internal::Outputs::in_place
                                           : internal::Outputs::anywhere;
        task.device = graph.size() > 0 ? &graph : nullptr;
        task.seed = seed;
        task.stream = static_cast<std::uint64_t>(run);
        auto found =
            unlocked([&] { return internal::search_parities(bits, task, control.effort(steps)); });
        TableOf<int> rows;
        for (const auto& [from, to, term] : found.steps) rows.push_back({from, to, term});
        return {to_numpy(rows), std::move(found.permutation)};
      },
      "parities"_a, "adjacency"_a, "ending"_a, "by_depth"_a, "seed"_a, "run"_a, "steps"_a.none(),
      "control"_a);
}

}  // namespace zelt::braidwerk::python
