#include "zeltbraidwerk/pauli/search/internal/network_plans.h"

#include <algorithm>
#include <cmath>

#include "zeltbraidwerk/pauli/search/internal/tuning.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr std::size_t remembered = 5;
constexpr const NetworkTargetTuning& tuning = network_target_tuning;

constexpr NetworkPlan plans_free[] = {
    {{.shape = 0.42, .bonus = 0.4, .emphasis = Emphasis::by_place, .rate = 50}},
    {{.shape = 0.44, .bonus = 0.8, .emphasis = Emphasis::by_place, .rate = 55}},
    {{.shape = 0.45}},
    {{.shape = 0.48, .bonus = 0.2, .emphasis = Emphasis::by_place, .rate = 35}},
    {{.shape = 0.42, .bonus = 0.6, .emphasis = Emphasis::by_place, .rate = 55}},
    {{.geometric = false, .shape = 2, .emphasis = Emphasis::by_place, .rate = 80}},
    {{.geometric = false, .shape = 3, .bonus = 0.5}},
    {{.shape = 0.44, .bonus = 0.8, .emphasis = Emphasis::by_place, .rate = 55}, true},
};
/// Strings are up to three times as far from a single letter, so costs are flatter.
constexpr NetworkPlan plans_on_device[] = {
    {{.shape = 0.44, .bonus = 0.8, .emphasis = Emphasis::by_place, .rate = 55}},
    {{.geometric = false, .shape = 2.5, .bonus = 1, .emphasis = Emphasis::by_place, .rate = 500}},
    {{.geometric = false, .shape = 2, .bonus = 0.5, .emphasis = Emphasis::by_place, .rate = 200}},
    {{.geometric = false, .shape = 2, .bonus = 1, .emphasis = Emphasis::by_place, .rate = 200}},
    {{.geometric = false, .shape = 2.5, .bonus = 1}},
    {{.geometric = false, .shape = 2, .bonus = 1, .emphasis = Emphasis::by_place, .rate = 80}},
    {{.shape = 0.45}},
    {{.shape = 0.44, .bonus = 0.8, .emphasis = Emphasis::by_place, .rate = 55}, true},
};
constexpr NetworkPlan plans_in_order[] = {
    {{.shape = 0.7, .bonus = 1, .emphasis = Emphasis::by_chain, .rate = 0.5}},
    {{.shape = 0.7, .bonus = 0.6, .emphasis = Emphasis::by_predecessors, .rate = 1}},
    {{.shape = 0.7, .bonus = 1, .emphasis = Emphasis::by_chain, .rate = 0.4}},
    {{.geometric = false, .shape = 0.7, .emphasis = Emphasis::by_predecessors, .rate = 1.2}},
};

double between(double low, double high, Rng& rng) {
  return low + (high - low) * static_cast<double>(rng.unit());
}

}  // namespace

std::span<const NetworkPlan> NetworkPlans::first() const {
  if (in_order_) return plans_in_order;
  if (on_device_) return plans_on_device;
  return plans_free;
}

void NetworkPlans::report(const NetworkPlan& plan, int cost) {
  const auto place = std::ranges::upper_bound(best_, cost, {}, &Tried::cost);
  best_.insert(place, {plan, cost});
  if (best_.size() > remembered) best_.pop_back();
}

NetworkPlan NetworkPlans::drawn_anew(Rng& rng) const {
  NetworkPlan plan;
  NetworkSettings& settings = plan.settings;
  settings.geometric = rng.chance(0.6F);
  if (in_order_) {
    settings.shape = settings.geometric ? between(0.55, 0.85, rng) : between(0.35, 1.1, rng);
    settings.bonus = between(0, settings.geometric ? 1.2 : 0.6, rng);
    settings.emphasis = rng.chance(0.4F) ? Emphasis::by_chain : Emphasis::by_predecessors;
    settings.rate =
        settings.emphasis == Emphasis::by_chain ? between(0.27, 0.48, rng) : between(0.8, 2, rng);
  } else if (on_device_ && !best_.empty() && !best_[0].plan.settings.geometric) {
    settings.geometric = false;
    settings.shape = between(1.6, 3, rng);
    settings.bonus = between(0, 1, rng);
    if (rng.chance(0.75F)) settings.emphasis = Emphasis::by_place;
    settings.rate = 60 * std::pow(10, between(0, 1, rng));
  } else if (!best_.empty() && best_[0].plan.settings.emphasis == Emphasis::by_place) {
    settings.shape = settings.geometric ? between(0.35, 0.6, rng) : between(1, 2.2, rng);
    settings.bonus = between(0, 1, rng);
    settings.emphasis = Emphasis::by_place;
    settings.rate = between(25, 90, rng);
    plan.sorted = best_[0].plan.sorted;
  } else {
    settings.shape = settings.geometric ? between(0.35, 0.6, rng) : between(2.2, 4, rng);
    settings.bonus = between(0, 0.5, rng);
  }
  return plan;
}

NetworkPlan NetworkPlans::draw(Rng& rng) const {
  if (best_.empty() || rng.chance(0.4F)) return drawn_anew(rng);
  return varied(best_[static_cast<std::size_t>(rng.below(static_cast<int>(best_.size())))].plan,
                rng);
}

NetworkPlan NetworkPlans::varied(NetworkPlan plan, Rng& rng) const {
  NetworkSettings& settings = plan.settings;
  settings.shape = settings.geometric
                       ? std::clamp(settings.shape + between(-0.07, 0.07, rng), 0.25, 0.92)
                       : settings.shape * between(0.8, 1.25, rng);
  settings.bonus = std::max(0.0, settings.bonus + between(-0.25, 0.25, rng));
  settings.rate *= between(0.85, 1.18, rng);
  settings.jitter = rng.chance(0.6F) ? 0 : between(0, 0.25, rng);
  if (has_target_) {
    settings.tail = rng.chance(tuning.tail_chance) ? between(0, tuning.most_tail, rng) : 0;
    return plan;
  }
  settings.tail = !closes_ || qubits_ > 12 || rng.chance(0.6F) ? 0 : between(0, 0.012, rng);
  return plan;
}

}  // namespace zelt::braidwerk::internal
