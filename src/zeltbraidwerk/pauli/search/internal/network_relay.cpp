#include "zeltbraidwerk/pauli/search/internal/network_relay.h"

#include <algorithm>

namespace zelt::braidwerk::internal {
namespace {

/// One run from a place: the gates that stay if it is the best, and where they lead.
struct Leg {
  std::vector<Gate> gates;
  NetworkState state;
  NetworkPlan plan;
  double cost = 0;
};

class Relay {
 public:
  Relay(const RotationList& list, const RelayOptions& options, const NetworkPlans& plans, Rng& rng,
        Meter& meter)
      : list_(list),
        options_(options),
        plans_(plans),
        rng_(rng),
        meter_(meter),
        judge_(list, options.in_order, plans.first()[0].settings, options.graph, rng) {}

  std::optional<std::vector<Gate>> run(const std::vector<Gate>& prefix) {
    std::vector<Gate> gates;
    NetworkState state = judge_.start();
    if (options_.known > 0) gate_ = static_cast<double>(judge_.costs(state)) / options_.known;
    for (const Gate& gate : prefix) judge_.play(state, gate);
    while (state.count_left > 0) {
      std::optional<Leg> best;
      for (int k = 0; k < options_.runs; ++k) {
        std::optional<Leg> leg = run_leg(state);
        if (!leg) return std::nullopt;
        if (!best || leg->cost < best->cost) best = std::move(leg);
      }
      gates.insert(gates.end(), best->gates.begin(), best->gates.end());
      state = std::move(best->state);
      followed_ = best->plan;
    }
    return gates;
  }

 private:
  std::optional<Leg> run_leg(const NetworkState& from) {
    const int end = std::max(0, from.count_left - options_.stretch);
    const int handover = end == 0 ? 0 : from.count_left - options_.stretch / 2;
    const bool vary = followed_ && rng_.chance(options_.alike);
    const NetworkPlan plan = vary ? plans_.varied(*followed_, rng_) : plans_.draw(rng_);
    NetworkProblem problem(list_, options_.in_order, plan.settings, options_.graph, rng_,
                           options_.target);
    NetworkState state = problem.taken_over(from);
    Leg leg;
    leg.plan = plan;
    int gates = 0;
    while (state.count_left > end) {
      const bool stays = state.count_left > handover;
      const Gate gate = problem.play_best(state);
      ++gates;
      if (stays) {
        leg.gates.push_back(gate);
        if (state.count_left <= handover) leg.state = state;
      }
      if (!meter_.step()) return std::nullopt;
    }
    leg.cost = gates;
    if (gate_ > 0) {
      leg.cost += static_cast<double>(judge_.costs(judge_.taken_over(state))) / gate_;
    }
    return leg;
  }

  const RotationList& list_;
  const RelayOptions& options_;
  const NetworkPlans& plans_;
  Rng& rng_;
  Meter& meter_;
  NetworkProblem judge_;
  std::optional<NetworkPlan> followed_;
  double gate_ = 0;  // its costs that one gate stands for
};

}  // namespace

std::optional<std::vector<Gate>> relay_gates(const RotationList& list, const RelayOptions& options,
                                             const std::vector<Gate>& prefix,
                                             const NetworkPlans& plans, Rng& rng, Meter& meter) {
  return Relay(list, options, plans, rng, meter).run(prefix);
}

}  // namespace zelt::braidwerk::internal
