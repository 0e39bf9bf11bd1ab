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

}  // namespace

void bind_cnot_search(nb::module_& m) {
  m.def(
      "_search_cnots",
      [](const ArrayLike& matrix, bool exact, int window, std::uint64_t seed, int run,
         std::optional<std::uint64_t> steps, SearchControl& control) -> Found {
        const BitMatrix bits = to_bits(matrix, "matrix");
        const internal::CnotSearchOptions options{exact, seed, stream(run), window};
        return to_found(
            unlocked([&] { return internal::search_cnot(bits, options, control.effort(steps)); }));
      },
      "matrix"_a, "exact"_a, "window"_a, "seed"_a, "run"_a, "steps"_a.none(), "control"_a);
  m.def(
      "_search_shallow_cnots",
      [](const ArrayLike& matrix, bool exact, std::uint64_t seed, int run,
         std::optional<std::uint64_t> steps, SearchControl& control) -> std::vector<Found> {
        const BitMatrix bits = to_bits(matrix, "matrix");
        const internal::ShallowOptions options{!exact, seed, stream(run)};
        const auto front = unlocked(
            [&] { return internal::search_shallow_cnot(bits, options, control.effort(steps)); });
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
        const internal::DeviceSearchOptions options{.reach = reach.value_or(internal::any_reach),
                                                    .by_depth = by_depth,
                                                    .seed = seed,
                                                    .stream = stream(run)};
        return to_found(internal::free_circuit(unlocked([&] {
          return internal::search_cnot_on_device(bits, graph, options, control.effort(steps));
        })));
      },
      "matrix"_a, "adjacency"_a, "reach"_a.none(), "by_depth"_a, "seed"_a, "run"_a,
      "steps"_a.none(), "control"_a);
}

}  // namespace zelt::braidwerk::python
