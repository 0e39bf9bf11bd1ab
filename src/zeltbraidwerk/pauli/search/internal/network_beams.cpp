#include "zeltbraidwerk/pauli/search/internal/network_beams.h"

#include <algorithm>
#include <cstdint>

#include "zeltbraidwerk/pauli/search/internal/network_closing.h"
#include "zeltbraidwerk/pauli/search/internal/network_relay.h"
#include "zeltbraidwerk/pauli/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/beam.h"

namespace zelt::braidwerk::internal {
namespace {

/// With a tail for which a share of the steps since `before` is taken.
Network played(const NetworkRun& run, NetworkProblem& problem, const std::vector<Gate>& prefix,
               const std::vector<Gate>& gates, std::uint64_t before) {
  std::vector<NetworkEvent> events;
  NetworkState state = problem.start(&events);
  for (const Gate& gate : prefix) problem.play(state, gate, &events);
  for (const Gate& gate : gates) problem.play(state, gate, &events);
  const std::uint64_t steps = std::min((run.meter.steps() - before) / network_tuning.tail_share,
                                       network_tuning.most_tail_steps);
  return closed(events, state.frame, run.task, run.meter.control(), steps, run.rng);
}

}  // namespace

std::vector<Gate> random_prefix(const Network& network, Rng& rng) {
  std::vector<Gate> prefix;
  const int cut = rng.below(network.open + 1);
  for (const NetworkEvent& event : network.events) {
    if (static_cast<int>(prefix.size()) == cut) break;
    if (event.row < 0) prefix.push_back(event.gate);
  }
  return prefix;
}

std::optional<Network> run_beam(const NetworkRun& run, const NetworkPlan& plan,
                                const std::vector<Gate>& prefix, int width) {
  NetworkProblem problem = run.problem(run.list(plan), plan.settings);
  NetworkState start = problem.start();
  for (const Gate& gate : prefix) problem.play(start, gate);
  const BeamOptions options{.width = width,
                            .patience = network_tuning.beam_patience + run.input.qubits(),
                            .noise = network_tuning.beam_noise};
  const std::uint64_t before = run.meter.steps();
  BeamSearch<NetworkProblem> beam(problem, options, run.rng, run.meter);
  const auto found = beam.run(start);
  if (found.empty() || run.meter.ended()) return std::nullopt;
  std::vector<Gate> gates;
  for (const auto& move : found[0].moves) gates.push_back(move.gate);
  return played(run, problem, prefix, gates, before);
}

std::optional<Network> run_relay(const NetworkRun& run, const std::vector<Gate>& prefix, int runs,
                                 int width, int known) {
  const NetworkTask& task = run.task;
  const RotationList& rows = run.list(run.plans.draw(run.rng));
  const RelayOptions options{
      .in_order = task.in_order,
      .target = task.target,
      .graph = task.device,
      .runs = runs,
      .width = width,
      .stretch = network_tuning.least_stretch + run.rng.below(network_tuning.stretches),
      .known = known,
      .narrow = task.device == nullptr && run.meter.seconds_left().has_value(),
      .alike = task.in_order ? 0 : network_tuning.alike};
  const std::uint64_t before = run.meter.steps();
  const auto gates = relay_gates(rows, options, prefix, run.plans, run.rng, run.meter);
  if (!gates) return std::nullopt;
  NetworkProblem problem = run.problem(rows, run.plans.first()[0].settings);
  return played(run, problem, prefix, *gates, before);
}

}  // namespace zelt::braidwerk::internal
