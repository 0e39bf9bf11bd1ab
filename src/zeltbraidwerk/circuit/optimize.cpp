#include "zeltbraidwerk/circuit/optimize.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "zeltbraidwerk/circuit/internal/folding.h"
#include "zeltbraidwerk/circuit/internal/steps.h"
#include "zeltbraidwerk/circuit/search/internal/alternation.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/search/internal/circuit_size.h"
#include "zeltbraidwerk/search/internal/runs.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

using synthesis::CircuitCounts;
using synthesis::OptimizeOptions;
using synthesis::OptimizeResult;

namespace {

constexpr std::uint64_t steps_of_gate = 30;  // where no effort is given

bool is_t(const LinearAngle& angle) {
  if (!angle.is_number()) return false;
  const double eighths = angle.constant / (std::numbers::pi / 4);
  return std::abs(eighths - std::round(eighths)) < clifford_tolerance;
}

CircuitCounts counts_of(const StepCircuit& circuit) {
  CircuitCounts counts;
  LayerCount layers(circuit.qubits);
  for (const Step& step : circuit.steps) {
    if (step.is_pair()) {
      ++counts.two_qubit;
      layers.add(step.a, step.b);
      continue;
    }
    ++counts.one_qubit;
    if (step.is_clifford()) continue;
    ++counts.rotations;
    counts.t += is_t(circuit.angles[static_cast<std::size_t>(step.row)]) ? 1 : 0;
  }
  counts.depth = layers.depth();
  return counts;
}

std::vector<synthesis::OptimizeStage> stages_of(const Stage* last) {
  std::vector<synthesis::OptimizeStage> stages;
  for (const Stage* stage = last; stage != nullptr; stage = stage->before.get()) {
    synthesis::OptimizeStage& made = stages.emplace_back();
    made.gates = stage->gates;
    made.permutation = stage->wires;
    for (const WindowStep& step : stage->log) {
      made.steps.push_back(
          {step.wires, step.kind == WindowStep::Kind::move, step.before, step.after});
    }
  }
  std::ranges::reverse(stages);
  return stages;
}

class OptimizeCall {
 public:
  OptimizeCall(int n, const std::vector<structures::Gate>& gates, const OptimizeOptions& options)
      : options_(options), control_(options.budget), given_(read_steps(n, gates)) {
    check();
    before_ = counts_of(given_);
    if (options.device != nullptr) check_edges();
    folded_ = given_;
    fold(folded_);
  }

  OptimizeResult run() {
    const Lane lane{.method = "search",
                    .runs = folded_.steps.empty() ? 1 : runs_of_search(options_),
                    .make = [this](int run) { return make(run); }};
    BestRun best = best_of_runs({lane}, options_, control_);
    auto& found = best.as<StagedCircuit>();
    OptimizeResult result{
        std::move(best.result),   written(found.circuit), before_,
        counts_of(found.circuit), found.circuit.rounding, stages_of(found.stage.get())};
    result.permutation = std::move(found.wires);
    return result;
  }

 private:
  void check() const {
    if (given_.qubits > most_wires) {
      throw synthesis::TooLargeError("n: got " + std::to_string(given_.qubits) +
                                     " qubits, wanted at most " + std::to_string(most_wires));
    }
    check_effort(options_);
    check_method(options_.method, {"auto", "search"}, options_.device != nullptr);
    if (options_.outputs != Outputs::in_place && options_.outputs != Outputs::anywhere) {
      throw std::invalid_argument("outputs: wanted in_place or anywhere");
    }
  }

  void check_edges() {
    edges_.emplace(*options_.device);
    require_connected(*edges_, given_.qubits);
    for (const Step& step : given_.steps) {
      if (!step.is_pair() || edges_->joined(step.a, step.b)) continue;
      if (options_.route) {
        routes_ = true;
        return;
      }
      throw std::invalid_argument("gates: got one on qubits " + std::to_string(step.a) + " and " +
                                  std::to_string(step.b) + ", wanted gates on edges of the device");
    }
  }

  std::optional<std::uint64_t> steps() const {
    if (options_.steps || options_.budget) return options_.steps;
    return default_search_steps + steps_of_gate * folded_.steps.size();
  }

  std::optional<MadeCircuit> make(int run) {
    CircuitTask task;
    task.objective = options_.objective;
    task.outputs = options_.outputs;
    task.device = edges_ ? &*edges_ : nullptr;
    task.seed = options_.seed;
    task.stream = static_cast<std::uint64_t>(run);
    task.routes = routes_;
    task.jobs = runs_of_search(options_) == 1 ? threads(options_) : 1;
    Effort effort = control_.effort(steps());
    effort.on_bound = nullptr;  // other rotations might take fewer gates
    StagedCircuit found = options_.exact || routes_ || !has_generic_rotations(folded_)
                              ? search_exactly(folded_, task, effort)
                              : search_alternating(folded_, options_.keep_rotations, task, effort);
    return made_circuit(found.size, std::move(found));
  }

  const OptimizeOptions& options_;
  RunControl control_;
  StepCircuit given_;
  StepCircuit folded_;
  CircuitCounts before_;
  std::optional<BitGraph> edges_;
  bool routes_ = false;
};

}  // namespace
}  // namespace zelt::braidwerk::internal

namespace synthesis {

OptimizeResult optimize_circuit(int n, const std::vector<structures::Gate>& gates,
                                const OptimizeOptions& options) {
  if (n < 0) throw std::invalid_argument("n: got " + std::to_string(n) + ", wanted at least 0");
  return zelt::braidwerk::internal::OptimizeCall(n, gates, options).run();
}

}  // namespace synthesis
