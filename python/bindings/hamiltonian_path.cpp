#include "zeltbraidwerk/graphs/internal/hamiltonian_path.h"

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
#include "zeltbraidwerk/search/internal/runs.h"

namespace zelt::braidwerk::python {

using nb::literals::operator""_a;

void bind_hamiltonian_path(nb::module_& m) {
  m.def(
      "_hamiltonian_path",
      [](const ArrayLike& adjacency, int steps,
         std::optional<double> seconds) -> std::tuple<std::string, std::vector<int>> {
        const internal::BitGraph graph = to_graph(adjacency);
        const internal::RunControl clock(seconds);
        internal::Control control = clock.control(graph.size());
        control.max_operations = steps;
        auto [outcome, path] =
            unlocked([&] { return internal::find_hamiltonian_path(graph, control); });
        const char* const names[] = {"found", "none", "unfinished"};
        return {names[outcome], std::move(path)};
      },
      "adjacency"_a, "steps"_a, "seconds"_a.none());
}

}  // namespace zelt::braidwerk::python
