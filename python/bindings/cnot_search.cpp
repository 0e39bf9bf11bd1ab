#include <nanobind/stl/optional.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "convert.h"
#include "module.h"
#include "search.h"
#include "zeltbraidwerk/linear/search/internal/cnot_search.h"
#include "zeltbraidwerk/linear/search/internal/depth_search.h"
#include "zeltbraidwerk/linear/search/internal/device_search.h"
#include "zeltbraidwerk/linear/search/internal/free_search.h"

/// \file
/// What linear.synthesize stands on for its method "search". A run is a stream of a seed; a circuit
/// comes with the wire of each output.
namespace zelt::braidwerk::python {

using internal::FreeCircuit;
using nb::literals::operator""_a;

namespace {

using Found = std::tuple<IntArray2, std::vector<int>>;

Found to_found(FreeCircuit circuit) {
  return {to_numpy(circuit.circuit.gates), std::move(circuit.perm)};
}

std::uint64_t stream(int run) {
  return static_cast<std::uint64_t>(run);
}

internal::Outputs outputs(bool exact) {
  return exact ? internal::Outputs::in_place : internal::Outputs::anywhere;
}

}  // namespace

void bind_cnot_search(nb::module_& m) {
  m.def(
      "_search_cnots",
      [](const ArrayLike& matrix, bool exact, int window, std::uint64_t seed, int run,
         std::optional<std::uint64_t> steps, SearchControl& control) -> Found {
        const BitMatrix bits = to_bits(matrix, "matrix");
        const internal::Task task{.outputs = outputs(exact), .seed = seed, .stream = stream(run)};
        return to_found(unlocked(
            [&] { return internal::search_cnot(bits, task, control.effort(steps), window); }));
      },
      "matrix"_a, "exact"_a, "window"_a, "seed"_a, "run"_a, "steps"_a.none(), "control"_a);
  m.def(
      "_search_shallow_cnots",
      [](const ArrayLike& matrix, bool exact, std::uint64_t seed, int run,
         std::optional<std::uint64_t> steps, SearchControl& control) -> std::vector<Found> {
        const BitMatrix bits = to_bits(matrix, "matrix");
        const internal::Task task{.objective = internal::Objective::depth,
                                  .outputs = outputs(exact),
                                  .seed = seed,
                                  .stream = stream(run)};
        const auto front = unlocked(
            [&] { return internal::search_shallow_cnot(bits, task, control.effort(steps)); });
        std::vector<Found> found;
        for (const auto& layered : front) {
          found.push_back(to_found(internal::free_circuit(layered.list)));
        }
        return found;
      },
      "matrix"_a, "exact"_a, "seed"_a, "run"_a, "steps"_a.none(), "control"_a);
  m.def(
      "_search_device_cnots",
      [](const ArrayLike& matrix, const ArrayLike& adjacency, std::optional<int> reach,
         bool by_depth, std::uint64_t seed, int run, std::optional<std::uint64_t> steps,
         SearchControl& control) -> Found {
        const BitMatrix bits = to_bits(matrix, "matrix");
        const internal::BitGraph graph = to_graph(adjacency);
        const internal::Task task{
            .objective = by_depth ? internal::Objective::depth : internal::Objective::count,
            .outputs = reach ? internal::Outputs::within_reach : internal::Outputs::anywhere,
            .reach = reach.value_or(0),
            .device = &graph,
            .seed = seed,
            .stream = stream(run)};
        return to_found(internal::free_circuit(unlocked(
            [&] { return internal::search_cnot_on_device(bits, task, control.effort(steps)); })));
      },
      "matrix"_a, "adjacency"_a, "reach"_a.none(), "by_depth"_a, "seed"_a, "run"_a,
      "steps"_a.none(), "control"_a);
}

}  // namespace zelt::braidwerk::python
