#include <nanobind/stl/optional.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <optional>
#include <tuple>
#include <vector>

#include "convert.h"
#include "module.h"
#include "operations.h"
#include "search.h"
#include "zeltbraidwerk/clifford/search/internal/state_search.h"

namespace zelt::braidwerk::python {

using internal::PauliFrame;
using nb::literals::operator""_a;

namespace {

PauliFrame to_stabilisers(const Letters& letters, const std::vector<bool>& minus) {
  const int n = static_cast<int>(letters.shape(1));
  PauliFrame frame = PauliFrame::pack(to_strings(letters), n);
  if (minus.size() != letters.shape(0)) raise_value_error("minus: wanted one a string");
  for (int r = 0; r < frame.rows(); ++r) frame.set_negative(r, minus[static_cast<std::size_t>(r)]);
  if (!internal::stabilise_a_state(frame)) raise_value_error("letters: not those of a state");
  return frame;
}

}  // namespace

void bind_state_search(nb::module_& m) {
  m.def(
      "_search_state",
      [](const Letters& letters, const std::vector<bool>& minus, bool by_depth, std::uint64_t seed,
         int run, std::optional<std::uint64_t> steps,
         SearchControl& control) -> std::tuple<Operations, int, int> {
        const PauliFrame stabilisers = to_stabilisers(letters, minus);
        const internal::Task task{
            .objective = by_depth ? internal::Objective::depth : internal::Objective::count,
            .seed = seed,
            .stream = static_cast<std::uint64_t>(run)};
        const auto found = unlocked(
            [&] { return internal::search_state(stabilisers, task, control.effort(steps)); });
        return {to_operations(found.gates), found.count, found.depth};
      },
      "letters"_a, "minus"_a, "by_depth"_a, "seed"_a, "run"_a, "steps"_a.none(), "control"_a,
      "A circuit that turns zeros into the state with these stabilisers, its CNOTs and layers.");
}

}  // namespace zelt::braidwerk::python
