#include "zeltbraidwerk/pauli/search/internal/network_starts.h"

#include <cstddef>
#include <utility>

#include "zeltbraidwerk/pauli/search/internal/ladders.h"
#include "zeltbraidwerk/pauli/search/internal/network_closing.h"
#include "zeltbraidwerk/pauli/search/internal/rotation_groups.h"
#include "zeltbraidwerk/pauli/search/internal/tuning.h"

namespace zelt::braidwerk::internal {
namespace {

Network with_short_tail(const NetworkRun& run, const std::vector<NetworkEvent>& events,
                        const LabelFrame& frame) {
  return closed(events, frame, run.task, run.meter.control(), 0, run.rng);
}

Network played(const NetworkRun& run, const std::vector<RotationGroup>& groups,
               const std::vector<Gate>& gates) {
  std::vector<int> order;
  for (const RotationGroup& group : groups) {
    for (const int row : group) order.push_back(run.input.given.number(row));
  }
  const RotationList grouped(run.input.rotations.frame, std::move(order));
  NetworkProblem problem = run.problem(grouped, run.plans.first()[0].settings);
  std::vector<NetworkEvent> events;
  NetworkState state = problem.start(&events);
  for (const Gate& gate : gates) problem.play(state, gate, &events);
  cancel_pairs(events);
  return with_short_tail(run, events, state.frame);
}

}  // namespace

std::optional<Network> run_greedily(const NetworkRun& run, const NetworkPlan& plan,
                                    bool whatever_effort) {
  NetworkProblem problem = run.problem(run.list(plan), plan.settings);
  std::vector<NetworkEvent> events;
  NetworkState state = problem.start(&events);
  while (!problem.done(state)) {
    problem.play_best(state, &events);
    if (!run.meter.step() && !whatever_effort) return std::nullopt;
  }
  return with_short_tail(run, events, state.frame);
}

std::vector<Network> run_ladders(const NetworkRun& run, int shortest) {
  const RotationList& list = run.input.given;
  const NetworkTask& task = run.task;
  std::vector<RotationGroup> groups;
  if (task.device == nullptr) {
    groups = groups_of(list, task.in_order);
  } else {
    for (int row = 0; row < list.count(); ++row) groups.push_back({row});
  }
  std::vector<Network> networks;
  const std::vector<Gate> gates = ladders(list, groups, task.in_order, task.device, false);
  if (task.by_depth() ||
      static_cast<std::size_t>(shortest) >= gates.size() / network_tuning.heavy_ladders) {
    networks.push_back(played(run, groups, gates));
  }
  if (task.by_depth() && task.device == nullptr) {
    groups = by_layers(list, std::move(groups), task.in_order);
    networks.push_back(played(run, groups, ladders(list, groups, task.in_order, nullptr, true)));
  }
  return networks;
}

}  // namespace zelt::braidwerk::internal
