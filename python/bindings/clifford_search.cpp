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
#include "zeltbraidwerk/clifford/search/internal/search.h"
#include "zeltbraidwerk/clifford/search/internal/starts.h"

/// \file
/// What clifford.synthesize stands on. An operator is the images of X, then of Z, on all qubits; a
/// circuit comes with the wire of each output.
namespace zelt::braidwerk::python {

using internal::PauliFrame;
using nb::literals::operator""_a;

namespace {

using Found = std::tuple<Operations, std::vector<int>>;

PauliFrame to_images(const Letters& letters, const std::vector<bool>& minus) {
  const int n = static_cast<int>(letters.shape(1));
  if (letters.shape(0) != 2 * letters.shape(1)) raise_value_error("letters: wanted two a qubit");
  if (minus.size() != letters.shape(0)) raise_value_error("minus: wanted one a string");
  PauliFrame frame = PauliFrame::pack(to_strings(letters), n);
  for (int r = 0; r < frame.rows(); ++r) frame.set_negative(r, minus[static_cast<std::size_t>(r)]);
  if (!internal::are_images_of_operator(frame)) raise_value_error("letters: of no operator");
  return frame;
}

internal::Outputs outputs(bool exact) {
  return exact ? internal::Outputs::in_place : internal::Outputs::anywhere;
}

}  // namespace

void bind_clifford_search(nb::module_& m) {
  m.def(
      "_search_clifford",
      [](const Letters& letters, const std::vector<bool>& minus, bool exact, bool by_depth,
         std::optional<ArrayLike> adjacency, std::uint64_t seed, int run,
         std::optional<std::uint64_t> steps, SearchControl& control) -> Found {
        const PauliFrame images = to_images(letters, minus);
        std::optional<internal::BitGraph> device;
        if (adjacency) device = to_graph(*adjacency);
        const internal::Task task{
            .objective = by_depth ? internal::Objective::depth : internal::Objective::count,
            .outputs = outputs(exact),
            .device = device ? &*device : nullptr,
            .seed = seed,
            .stream = static_cast<std::uint64_t>(run)};
        auto circuit = unlocked(
            [&] { return internal::search_clifford(images, task, control.effort(steps)).circuit; });
        return {to_operations(circuit.gates), std::move(circuit.wires)};
      },
      "letters"_a, "minus"_a, "exact"_a, "by_depth"_a, "adjacency"_a.none(), "seed"_a, "run"_a,
      "steps"_a.none(), "control"_a);
  m.def(
      "_eliminate_clifford",
      [](const Letters& letters, const std::vector<bool>& minus, bool exact) -> Found {
        const PauliFrame images = to_images(letters, minus);
        auto circuit = unlocked([&] {
          return internal::to_circuit(internal::eliminated_list(images, outputs(exact)), images);
        });
        return {to_operations(circuit.gates), std::move(circuit.wires)};
      },
      "letters"_a, "minus"_a, "exact"_a);
}

}  // namespace zelt::braidwerk::python
