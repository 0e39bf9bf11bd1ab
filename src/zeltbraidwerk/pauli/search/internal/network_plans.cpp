#include "zeltbraidwerk/pauli/search/internal/network_plans.h"

#include <algorithm>
#include <cmath>

#include "zeltbraidwerk/pauli/search/internal/tuning.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr const PlanTuning& tuning = plan_tuning;

double drawn(const Range& range, Rng& rng) {
  return range.low + (range.high - range.low) * static_cast<double>(rng.unit());
}

}  // namespace

std::span<const NetworkPlan> NetworkPlans::first() const {
  if (in_order_) return tuning.first_in_order;
  if (on_device_) return tuning.first_on_device;
  return tuning.first;
}

void NetworkPlans::report(const NetworkPlan& plan, int cost) {
  const auto place = std::ranges::upper_bound(best_, cost, {}, &Tried::cost);
  best_.insert(place, {plan, cost});
  if (best_.size() > tuning.remembered) best_.pop_back();
}

NetworkPlan NetworkPlans::drawn_anew(Rng& rng) const {
  NetworkPlan plan;
  NetworkSettings& settings = plan.settings;
  settings.geometric = rng.chance(tuning.geometric);
  const auto draw_costs = [&](const DrawnCosts& geometric, const DrawnCosts& power) {
    const DrawnCosts& costs = settings.geometric ? geometric : power;
    settings.shape = drawn(costs.shape, rng);
    settings.bonus = drawn(costs.bonus, rng);
  };
  if (in_order_) {
    draw_costs(tuning.geometric_in_order, tuning.power_in_order);
    const bool by_chain = rng.chance(tuning.by_chain);
    settings.emphasis = by_chain ? Emphasis::by_chain : Emphasis::by_predecessors;
    settings.rate = drawn(by_chain ? tuning.rate_by_chain : tuning.rate_by_predecessors, rng);
  } else if (on_device_ && !best_.empty() && !best_[0].plan.settings.geometric) {
    settings.geometric = false;
    draw_costs(tuning.power_on_device, tuning.power_on_device);
    if (rng.chance(tuning.by_place_on_device)) settings.emphasis = Emphasis::by_place;
    settings.rate = std::pow(10, drawn(tuning.decades_on_device, rng)) * tuning.rate_on_device;
  } else if (!best_.empty() && best_[0].plan.settings.emphasis == Emphasis::by_place) {
    draw_costs(tuning.geometric_by_place, tuning.power_by_place);
    settings.emphasis = Emphasis::by_place;
    settings.rate = drawn(tuning.rate_by_place, rng);
    plan.sorted = best_[0].plan.sorted;
  } else {
    draw_costs(tuning.geometric_equal, tuning.power_equal);
  }
  return plan;
}

NetworkPlan NetworkPlans::draw(Rng& rng) const {
  if (best_.empty() || rng.chance(tuning.anew)) return drawn_anew(rng);
  return varied(best_[static_cast<std::size_t>(rng.below(static_cast<int>(best_.size())))].plan,
                rng);
}

NetworkPlan NetworkPlans::varied(NetworkPlan plan, Rng& rng) const {
  NetworkSettings& settings = plan.settings;
  if (settings.geometric) {
    settings.shape = std::clamp(settings.shape + drawn(tuning.shape_change, rng),
                                tuning.geometric_shapes.low, tuning.geometric_shapes.high);
  } else {
    settings.shape *= drawn(tuning.power_shape_factor, rng);
  }
  settings.bonus = std::max(0.0, settings.bonus + drawn(tuning.bonus_change, rng));
  settings.rate *= drawn(tuning.rate_factor, rng);
  settings.jitter = rng.chance(tuning.no_jitter) ? 0 : drawn(tuning.jitter, rng);
  if (has_target_) {
    const NetworkTargetTuning& target = network_target_tuning;
    settings.tail = rng.chance(target.tail_chance) ? target.most_tail * double{rng.unit()} : 0;
    return plan;
  }
  const bool no_tail = !closes_ || qubits_ > tuning.tail_qubits || rng.chance(tuning.no_tail);
  settings.tail = no_tail ? 0 : drawn(tuning.tail, rng);
  return plan;
}

}  // namespace zelt::braidwerk::internal
