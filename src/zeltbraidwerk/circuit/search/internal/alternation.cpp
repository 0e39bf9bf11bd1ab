#include "zeltbraidwerk/circuit/search/internal/alternation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <utility>

#include "zeltbraidwerk/circuit/internal/folding.h"
#include "zeltbraidwerk/circuit/search/internal/tuning.h"
#include "zeltbraidwerk/circuit/three_wire/internal/three_wire.h"
#include "zeltbraidwerk/circuit/three_wire/internal/three_wire_windows.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/pauli/search/internal/network.h"
#include "zeltbraidwerk/search/internal/circuit_size.h"
#include "zeltbraidwerk/search/internal/driver.h"
#include "zeltbraidwerk/search/internal/orders.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr const CircuitTuning& tuning = circuit_tuning;

std::vector<int> composed(const std::vector<int>& first, const std::vector<int>& second) {
  std::vector<int> wires;
  for (const int wire : first) wires.push_back(second[static_cast<std::size_t>(wire)]);
  return wires;
}

CircuitSize size_of(const StepCircuit& circuit) {
  CircuitSize size;
  LayerCount layers(circuit.qubits);
  for (const Step& step : circuit.steps) {
    if (!step.is_pair()) continue;
    layers.add(step.a, step.b);
    ++size.count;
  }
  size.depth = layers.depth();
  return size;
}

StagedCircuit after_search(const StagedCircuit& from, const CircuitTask& task,
                           const Effort& effort) {
  CircuitFound found = search_circuit(from.circuit.qubits, from.circuit.steps, task, effort);
  StagedCircuit result{from.circuit, composed(from.wires, found.wires), nullptr, found.size};
  result.circuit.steps = std::move(found.steps);
  renumber(result.circuit);
  result.stage = std::make_shared<const Stage>(Stage{from.stage, result.circuit, result.wires});
  return result;
}

StagedCircuit after_windows(const StagedCircuit& from, WindowResult found) {
  auto numbers = std::make_shared<const Stage>(Stage{
      from.stage, {}, from.wires, std::move(found.circuit), std::move(found.log), found.phase});
  StagedCircuit result{read_steps(from.circuit.qubits, numbers->gates), from.wires, nullptr, {}};
  fold(result.circuit);
  result.circuit.rounding = std::max(result.circuit.rounding, from.circuit.rounding);
  result.size = size_of(result.circuit);
  result.stage = std::make_shared<const Stage>(Stage{numbers, result.circuit, from.wires});
  return result;
}

class Alternation : public SearchBase<StagedCircuit> {
 public:
  Alternation(const StepCircuit& circuit, bool keep_rotations, const CircuitTask& task,
              const Effort& effort)
      : SearchBase(task, effort, Ties::latest),
        given_(as_given(circuit)),
        keep_rotations_(keep_rotations),
        circuit_task_(task) {}

  Schedule schedule() const {
    const std::size_t least = tuning.alternation_steps * given_.circuit.steps.size();
    return {.first_steps = static_cast<double>(std::max<std::size_t>(tuning.first_steps, least)),
            .most_growths = tuning.most_doublings};
  }

  void first() {
    offer(given_, Origin::certain);
    offer_windows(given_, tuning.least_on_three_wires, Origin::certain);
  }
  bool finished() const { return incumbent().size().count == 0; }

  /// From the best circuit so far.
  void round(const Round& round) {
    CircuitTask task = circuit_task_;
    task.seed = rng_.next();
    Effort effort;
    effort.control = meter_.control();
    effort.steps = std::min(round.steps, meter_.left());
    const StagedCircuit found = after_search(incumbent().circuit(), task, effort);
    meter_.charge(effort.steps + 1);
    offer(found, task_.by_depth() ? Origin::lowering_depth : Origin::lowering_count);
    if (!meter_.ended()) offer_windows(found, most_cnots_of_three + 1, Origin::derived);
  }

 private:
  /// With windows on two wires replaced, then with those on three wires as well, from so many
  /// two-wire gates on.
  void offer_windows(const StagedCircuit& from, int least_on_three, Origin origin) {
    const StopScope in_time(meter_.control(), true);  // there is a circuit already
    const auto on_two = [this](const StagedCircuit& circuit) {
      return after_windows(circuit, two_wire_windows(written(circuit.circuit), {keep_rotations_}));
    };
    const StagedCircuit two = on_two(from);
    offer(two, origin);
    WindowResult found = three_wire_windows(
        written(two.circuit),
        {keep_rotations_, least_on_three, task_.device, [this] { return meter_.ended(); }});
    if (!found.log.empty()) offer(on_two(after_windows(two, std::move(found))), origin);
  }
  void offer(const StagedCircuit& circuit, Origin origin) {
    if (circuit_task_.keeps_depth && circuit.size.depth > given_.size.depth) return;
    incumbent_.offer(circuit, circuit.size, origin);
  }

  const StagedCircuit given_;
  bool keep_rotations_;
  const CircuitTask& circuit_task_;
};

}  // namespace

StagedCircuit as_given(const StepCircuit& circuit) {
  std::vector<int> wires = in_order(circuit.qubits);
  auto stage = std::make_shared<const Stage>(Stage{nullptr, circuit, wires});
  return {circuit, std::move(wires), std::move(stage), size_of(circuit)};
}

bool has_generic_rotations(const StepCircuit& circuit) {
  return std::ranges::any_of(circuit.angles, [](const LinearAngle& angle) {
    return angle.is_number() &&
           std::abs(std::remainder(angle.constant, std::numbers::pi / 4)) > clifford_tolerance;
  });
}

StagedCircuit search_alternating(const StepCircuit& circuit, bool keep_rotations,
                                 const CircuitTask& task, const Effort& effort) {
  Effort half = effort;
  half.steps = effort.steps / 2;
  half.control = effort.control.for_half_the_time();
  StagedCircuit exact = search_exactly(circuit, task, half);
  if (effort.control.stop_requested()) return exact;
  Effort rest = effort;
  rest.steps = effort.steps - half.steps;
  Alternation search(circuit, keep_rotations, task, rest);
  run_search(search);
  const StagedCircuit& found = search.incumbent().circuit();
  return found.size.key(task.objective) < exact.size.key(task.objective) ? found : exact;
}

StagedCircuit search_exactly(const StepCircuit& circuit, const CircuitTask& task,
                             const Effort& effort) {
  StagedCircuit start = as_given(circuit);
  if (task.routes || !effort.control.stop_requested()) return after_search(start, task, effort);
  if (effort.on_better) effort.on_better({0, 0, start.size.count, start.size.depth});
  return start;
}

}  // namespace zelt::braidwerk::internal
