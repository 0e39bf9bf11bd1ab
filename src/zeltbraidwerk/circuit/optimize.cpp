#include "zeltbraidwerk/circuit/optimize.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <numbers>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "zeltbraidwerk/circuit/internal/clifford_phase.h"
#include "zeltbraidwerk/circuit/internal/folding.h"
#include "zeltbraidwerk/circuit/internal/optimize.h"
#include "zeltbraidwerk/circuit/internal/steps.h"
#include "zeltbraidwerk/circuit/internal/tidying.h"
#include "zeltbraidwerk/circuit/search/internal/alternation.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/graphs/internal/edge_paths.h"
#include "zeltbraidwerk/search/internal/circuit_size.h"
#include "zeltbraidwerk/search/internal/orders.h"
#include "zeltbraidwerk/search/internal/runs.h"

namespace zelt::braidwerk::internal {

using synthesis::CircuitCounts;
using synthesis::OptimizeOptions;
using synthesis::OptimizeResult;

namespace {

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

std::vector<synthesis::OptimizeStage> written_stages(const StagedCircuit& circuit) {
  std::vector<synthesis::OptimizeStage> stages;
  for (const Stage* stage : stages_of(circuit)) {
    stages.push_back({stage->log.empty() ? written(stage->circuit) : stage->gates, stage->wires,
                      log_of(*stage), stage->phase});
  }
  return stages;
}

constexpr double bytes_of_run = 150;     // over the square of the qubits
constexpr double bytes_of_step = 3'000;  // of a gate that is given

class OptimizeCall {
 public:
  OptimizeCall(StepCircuit given, const OptimizeOptions& options)
      : options_(options), control_(options.budget), given_(std::move(given)) {
    check();
    before_ = counts_of(given_);
    if (options.device != nullptr) check_edges();
    folded_ = given_;
    fold_given();
  }

  FoundSteps run() {
    const Lane lane{.method = "search",
                    .runs = folded_.steps.empty() ? 1 : runs_of_search(options_),
                    .make = [this](int run) { return make(run); }};
    const std::optional<Lane> plain = routes_ ? std::optional(plain_lane()) : std::nullopt;
    BestRun best = best_of_runs({lane}, options_, control_, plain);
    auto& found = best.as<std::vector<StagedCircuit>>();
    FoundSteps result{std::move(best.result), before_, std::move(found)};
    result.permutation = result.found.front().wires;
    return result;
  }

 private:
  /// Where it may take long, as a run, so that `stop` ends it.
  void fold_given() {
    if (folded_.steps.size() < 1000) return fold(folded_);
    synthesis::SynthesisOptions options;
    options.stop = options_.stop;
    RunControl control(std::nullopt);
    const Lane folding{.method = "folding", .runs = 1, .make = [this](int) {
                         fold(folded_);
                         return std::optional(made_circuit({}, true));
                       }};
    best_of_runs({folding}, options, control);
  }

  void check() const {
    check_wires("n", given_.qubits);
    check_search_memory("circuit", given_.qubits, options_, bytes_of_run,
                        {static_cast<int>(given_.steps.size()), "gates", bytes_of_step});
    check_effort(options_);
    check_method(options_.method, {"auto", "search"}, options_.device != nullptr);
    refuse_any_start(options_);
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
        if (options_.keep_depth) {
          throw std::invalid_argument("keep_depth: wanted gates on edges of the device");
        }
        routes_ = true;
        return;
      }
      throw std::invalid_argument("gates: got one on qubits " + std::to_string(step.a) + " and " +
                                  std::to_string(step.b) + ", wanted gates on edges of the device");
    }
  }

  std::optional<std::uint64_t> steps() const {
    if (options_.steps || options_.budget) return options_.steps;
    return synthesis::default_optimize_steps(folded_.steps.size());
  }

  std::optional<MadeCircuit> make(int run) {
    CircuitTask task;
    task.objective = options_.objective;
    task.outputs = options_.outputs;
    task.device = edges_ ? &*edges_ : nullptr;
    task.seed = options_.seed;
    task.stream = static_cast<std::uint64_t>(run);
    task.routes = routes_;
    task.keeps_depth = options_.keep_depth;
    task.jobs = runs_of_search(options_) == 1 ? threads(options_) : 1;
    Effort effort = control_.effort(steps());
    effort.on_bound = nullptr;  // other rotations might take fewer gates
    std::vector<StagedCircuit> found;
    if (task.by_depth())
      found = by_both(task, effort);
    else
      found.push_back(search(task, effort));
    const StopScope::Suspended to_the_end;
    for (StagedCircuit& circuit : found) tidy(circuit);
    const CircuitSize size = found.front().size;
    return made_circuit(size, std::move(found));
  }

  /// The circuit along shortest paths, for where no routing is found in time.
  Lane plain_lane() const {
    return {.method = "search",
            .runs = 1,
            .make =
                [this](int) {
                  StagedCircuit found =
                      as_given(read_steps(given_.qubits, along_edges(written(folded_), *edges_)));
                  found.circuit.rounding = folded_.rounding;
                  const CircuitSize size = found.size;
                  return std::optional(made_circuit(size, std::vector{std::move(found)}));
                },
            .draws = false};
  }

  StagedCircuit search(const CircuitTask& task, const Effort& effort) const {
    return options_.exact || routes_ || !has_generic_rotations(folded_)
               ? search_exactly(folded_, task, effort)
               : search_alternating(folded_, options_.keep_rotations, task, effort);
  }

  /// By depth: what a search by count finds counts as well. The best one, then the shorter one
  /// where it is shorter.
  std::vector<StagedCircuit> by_both(const CircuitTask& task, Effort effort) const {
    Effort first = effort;
    first.control = effort.control.for_half_the_time();
    CircuitTask by_count = task;
    by_count.objective = Objective::count;
    StagedCircuit shorter = search(by_count, first);
    StagedCircuit best = shorter;
    try {
      best = search(task, effort);
    } catch (const Stopped&) {
      // What the search by count has found stands.
    }
    const auto key = [](const StagedCircuit& circuit) {
      return circuit.size.key(Objective::depth);
    };
    if (key(shorter) < key(best)) std::swap(shorter, best);
    std::vector<StagedCircuit> front{std::move(best)};
    if (shorter.size.count < front[0].size.count) front.push_back(std::move(shorter));
    return front;
  }

  /// Few gates on one qubit. The given circuit may have fewer than one made anew.
  void tidy(StagedCircuit& found) const {
    const bool with_cz =
        std::ranges::find(given_.steps, StepKind::cz, &Step::kind) != given_.steps.end();
    const bool is_new = found.circuit.steps != folded_.steps;
    found.circuit.steps = tidied(given_.qubits, found.circuit.steps, with_cz);
    auto before = found.stage->log.empty() ? found.stage->before : found.stage;
    if (is_new && !routes_ && found.size == CircuitSize{before_.two_qubit, before_.depth}) {
      std::vector<Step> steps = tidied(given_.qubits, folded_.steps, with_cz);
      if (steps.size() < found.circuit.steps.size()) {
        found.circuit = folded_;
        found.circuit.steps = std::move(steps);
        found.wires = in_order(given_.qubits);
        before = nullptr;
      }
    }
    found.stage =
        std::make_shared<const Stage>(Stage{std::move(before), found.circuit, found.wires});
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

FoundSteps optimize_steps(StepCircuit given, const OptimizeOptions& options) {
  return OptimizeCall(std::move(given), options).run();
}

std::vector<const Stage*> stages_of(const StagedCircuit& circuit) {
  std::vector<const Stage*> stages;
  for (const Stage* stage = circuit.stage.get(); stage != nullptr; stage = stage->before.get()) {
    if (stages.empty() || !stages.back()->log.empty() || !stage->log.empty()) {
      stages.push_back(stage);
    }
  }
  std::ranges::reverse(stages);
  return stages;
}

std::vector<synthesis::OptimizeStep> log_of(const Stage& stage) {
  std::vector<synthesis::OptimizeStep> steps;
  for (const WindowStep& step : stage.log) {
    steps.push_back({step.wires, step.kind == WindowStep::Kind::move, step.before, step.after});
  }
  return steps;
}

namespace {

OptimizeResult optimized(const StepCircuit& given, const OptimizeOptions& options) {
  FoundSteps found = optimize_steps(given, options);
  OptimizeResult result;
  static_cast<synthesis::SynthesisResult&>(result) = std::move(found);
  result.before = found.before;
  const StagedCircuit& first = found.found.front();
  result.after = counts_of(first.circuit);
  result.rounding = first.circuit.rounding;
  result.stages = written_stages(first);
  result.gates = result.stages.back().gates;
  if (options.objective != Objective::depth) return result;
  for (const StagedCircuit& circuit : found.found) {
    result.front.push_back(
        {counts_of(circuit.circuit), circuit.circuit.rounding, written_stages(circuit)});
  }
  return result;
}

}  // namespace
}  // namespace zelt::braidwerk::internal

namespace synthesis {

OptimizeResult optimize_circuit(int n, const std::vector<structures::Gate>& gates,
                                const OptimizeOptions& options) {
  if (n < 0) throw std::invalid_argument("n: got " + std::to_string(n) + ", wanted at least 0");
  namespace internal = zelt::braidwerk::internal;
  return internal::optimized(internal::read_steps(n, gates), options);
}

std::uint64_t default_optimize_steps(std::size_t gates) {
  constexpr std::uint64_t steps_of_gate = 30;
  return zelt::braidwerk::internal::default_search_steps + steps_of_gate * gates;
}

double global_phase(int n, const std::vector<structures::Gate>& gates,
                    const std::vector<OptimizeStage>& stages) {
  double phase = 0;
  const std::vector<structures::Gate>* before = &gates;
  std::vector<int> there = zelt::braidwerk::internal::in_order(n);
  for (const OptimizeStage& stage : stages) {
    phase += stage.phase;
    if (stage.steps.empty()) {
      std::vector<int> wires(there.size());
      for (std::size_t q = 0; q < wires.size(); ++q) {
        wires[static_cast<std::size_t>(there[q])] = stage.permutation[q];
      }
      phase += zelt::braidwerk::internal::rewriting_phase(n, *before, stage.gates, wires);
      there = stage.permutation;
    }
    before = &stage.gates;
  }
  phase = std::remainder(phase, 2 * std::numbers::pi);
  return phase <= -std::numbers::pi ? std::numbers::pi : phase;
}

}  // namespace synthesis
