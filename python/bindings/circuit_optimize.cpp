#include <nanobind/stl/array.h>
#include <nanobind/stl/variant.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

#include "held_gates.h"
#include "module.h"
#include "synthesize.h"
#include "zeltbraidwerk/circuit/internal/clifford_phase.h"
#include "zeltbraidwerk/circuit/internal/folding.h"
#include "zeltbraidwerk/circuit/internal/optimize.h"

namespace zelt::braidwerk::python {

using nb::literals::operator""_a;
using synthesis::OptimizeOptions;
using synthesis::SynthesisResult;

namespace {

using Gates = std::vector<structures::Gate>;
// As in the library. A step: qubits, whether it moves, the gates before by number, and those after.
using Step = std::tuple<std::array<int, 3>, bool, std::vector<std::size_t>, Gates>;
using Stage =
    std::tuple<std::variant<HeldGates, HeldSteps>, std::vector<int>, std::vector<Step>, double>;
// Permutation, gates, rounding, stages.
using Found = std::tuple<std::vector<int>, HeldSteps, double, std::vector<Stage>>;

Stage stage_of(const internal::Stage& stage) {
  std::vector<Step> log;
  for (synthesis::OptimizeStep& step : internal::log_of(stage)) {
    log.emplace_back(step.qubits, step.moves, std::move(step.before), std::move(step.after));
  }
  if (!log.empty()) return {HeldGates{stage.gates}, stage.wires, std::move(log), stage.phase};
  return {HeldSteps{stage.circuit}, stage.wires, std::move(log), stage.phase};
}

Found found_of(const internal::StagedCircuit& circuit) {
  std::vector<Stage> stages;
  const std::vector<const internal::Stage*> all = internal::stages_of(circuit);
  // None where all is exact rewriting, so that given and last circuit tell all.
  if (all.size() > 1) {
    for (const internal::Stage* stage : all) stages.push_back(stage_of(*stage));
  }
  return {circuit.wires, HeldSteps{circuit.circuit}, circuit.circuit.rounding, std::move(stages)};
}

}  // namespace

void bind_circuit_optimize(nb::module_& m) {
  m.def(
      "_optimize_circuit",
      [](const HeldSteps& given, const CommonOptions& common, bool exact, bool keep_rotations,
         bool keep_depth, bool route) -> std::tuple<SynthesisResult, std::vector<Found>> {
        OptimizeOptions own;
        own.exact = exact;
        own.keep_rotations = keep_rotations;
        own.keep_depth = keep_depth;
        own.route = route;
        internal::FoundSteps result = synthesized(common, own, [&](const OptimizeOptions& options) {
          return internal::optimize_steps(given.circuit, options);
        });
        std::vector<Found> found;
        for (const internal::StagedCircuit& circuit : result.found) {
          found.push_back(found_of(circuit));
        }
        return {std::move(result), std::move(found)};
      },
      "circuit"_a, "options"_a, "exact"_a, "keep_rotations"_a, "keep_depth"_a, "route"_a);
  m.def("_optimize_steps", &synthesis::default_optimize_steps, "gates"_a);
  m.def(
      "_rewriting_phase",
      [](int n, const HeldGates& before, const HeldGates& after, const std::vector<int>& wires) {
        return unlocked(
            [&] { return internal::rewriting_phase(n, before.gates, after.gates, wires); });
      },
      "n"_a, "before"_a, "after"_a, "wires"_a);
  m.def(
      "_fold_circuit",
      [](int n, const HeldGates& given) {
        check_circuit(given.gates, n);
        return interruptible(std::nullopt, n, [&](const internal::Control&) {
          internal::StepCircuit circuit = internal::read_steps(n, given.gates);
          internal::fold(circuit);
          return std::optional(HeldGates{internal::written(circuit)});
        });
      },
      "n"_a, "gates"_a);
}

}  // namespace zelt::braidwerk::python
