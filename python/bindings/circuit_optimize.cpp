#include <nanobind/stl/array.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <tuple>
#include <utility>
#include <vector>

#include "held_gates.h"
#include "module.h"
#include "synthesize.h"
#include "zeltbraidwerk/circuit/internal/clifford_phase.h"
#include "zeltbraidwerk/circuit/internal/folding.h"
#include "zeltbraidwerk/circuit/optimize.h"

namespace zelt::braidwerk::python {

using nb::literals::operator""_a;
using synthesis::OptimizeOptions;
using synthesis::OptimizeResult;
using synthesis::SynthesisResult;

namespace {

using Gates = std::vector<structures::Gate>;
// As in the library. A step: qubits, whether it moves, the gates before by number, and those after.
using Step = std::tuple<std::array<int, 3>, bool, std::vector<std::size_t>, Gates>;
using Stage = std::tuple<HeldGates, std::vector<int>, std::vector<Step>, double>;
// Permutation, gates, rounding, stages.
using Found = std::tuple<std::vector<int>, HeldGates, double, std::vector<Stage>>;

/// None where all is exact rewriting, so that given and last circuit tell all.
std::vector<Stage> stages_of(std::vector<synthesis::OptimizeStage>&& stages) {
  const bool exact = std::ranges::all_of(
      stages, [](const synthesis::OptimizeStage& stage) { return stage.steps.empty(); });
  std::vector<Stage> result;
  for (synthesis::OptimizeStage& stage : stages) {
    if (exact) break;
    std::vector<Step> steps;
    for (synthesis::OptimizeStep& step : stage.steps) {
      steps.emplace_back(step.qubits, step.moves, std::move(step.before), std::move(step.after));
    }
    result.emplace_back(HeldGates{std::move(stage.gates)}, std::move(stage.permutation),
                        std::move(steps), stage.phase);
  }
  return result;
}

std::vector<Found> front_of(std::vector<synthesis::OptimizedCircuit>&& front) {
  std::vector<Found> result;
  for (synthesis::OptimizedCircuit& circuit : front) {
    HeldGates gates{circuit.stages.back().gates};
    std::vector<int> wires = circuit.stages.back().permutation;
    result.emplace_back(std::move(wires), std::move(gates), circuit.rounding,
                        stages_of(std::move(circuit.stages)));
  }
  return result;
}

}  // namespace

void bind_circuit_optimize(nb::module_& m) {
  m.def(
      "_optimize_circuit",
      [](int n, const HeldGates& given, const CommonOptions& common, bool exact,
         bool keep_rotations, bool keep_depth,
         bool route) -> std::tuple<SynthesisResult, HeldGates, double, std::vector<Stage>,
                                   std::vector<Found>> {
        check_circuit(given.gates, n);
        OptimizeOptions own;
        own.exact = exact;
        own.keep_rotations = keep_rotations;
        own.keep_depth = keep_depth;
        own.route = route;
        OptimizeResult result = synthesized(common, own, [&](const OptimizeOptions& options) {
          return synthesis::optimize_circuit(n, given.gates, options);
        });
        HeldGates found{std::move(result.gates)};
        const double rounding = result.rounding;
        std::vector<Stage> stages = stages_of(std::move(result.stages));
        std::vector<Found> front = front_of(std::move(result.front));
        return {std::move(result), std::move(found), rounding, std::move(stages), std::move(front)};
      },
      "n"_a, "gates"_a, "options"_a, "exact"_a, "keep_rotations"_a, "keep_depth"_a, "route"_a);
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
