#include "zeltbraidwerk/pauli/search/internal/network_relay.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "zeltbraidwerk/pauli/search/internal/tuning.h"

namespace zelt::braidwerk::internal {
namespace {

/// One run from a place: the gates that stay if it is the best, and where they lead.
struct Leg {
  std::vector<Gate> gates;
  NetworkState state;
  NetworkPlan plan;
  double cost = 0;  ///< with the gates before it
  double pace = 0;  ///< gates of the run for each rotation that it served
  std::size_t from = 0;
  std::uint64_t place = 0;  ///< hash of the state
};

struct Place {
  std::vector<Gate> gates;
  NetworkState state;
  std::optional<NetworkPlan> followed;
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
    NetworkState start = judge_.start();
    if (options_.known > 0) gate_ = static_cast<double>(judge_.costs(start)) / options_.known;
    for (const Gate& gate : prefix) judge_.play(start, gate);
    if (start.count_left == 0) return std::vector<Gate>();
    std::vector<Place> places;
    places.push_back({.gates = {}, .state = std::move(start), .followed = {}});
    while (true) {
      if (!run_legs(places)) return std::nullopt;
      std::vector<Place> next;
      for (Leg& leg : best_) {
        const Place& from = places[leg.from];
        Place place{from.gates, std::move(leg.state), leg.plan};
        place.gates.insert(place.gates.end(), leg.gates.begin(), leg.gates.end());
        if (place.state.count_left == 0) return place.gates;
        next.push_back(std::move(place));
      }
      places = std::move(next);
    }
  }

 private:
  /// From all places, as many in all from a single one; the best are kept.
  bool run_legs(const std::vector<Place>& places) {
    best_.clear();
    const int runs = places.size() > 1 ? options_.runs : options_.runs * options_.width;
    for (std::size_t from = 0; from < places.size(); ++from) {
      for (int k = 0; k < runs; ++k) {
        std::optional<Leg> leg = run_leg(places[from]);
        if (meter_.ended()) return false;
        if (!leg) continue;
        leg->from = from;
        leg->cost += static_cast<double>(places[from].gates.size());
        keep(std::move(*leg));
      }
    }
    return true;
  }

  void keep(Leg leg) {
    const auto same = std::ranges::find(best_, leg.place, &Leg::place);
    if (same != best_.end()) {
      if (same->cost <= leg.cost) return;
      best_.erase(same);
    }
    const auto place = std::ranges::upper_bound(best_, leg.cost, {}, &Leg::cost);
    best_.insert(place, std::move(leg));
    if (best_.size() > static_cast<std::size_t>(options_.width)) best_.pop_back();
  }

  /// Whether a run, at the pace of the best one or even a good deal faster, would not be kept.
  /// What it leaves is only known at its end: where that counts, none is given up.
  bool is_in_vain(double gates, int rotations_to_come) const {
    if (gate_ > 0 || best_.size() < static_cast<std::size_t>(options_.width)) return false;
    const double to_come = network_tuning.relay_pace * best_.front().pace * rotations_to_come;
    return gates + std::max(to_come, 1.0) >= best_.back().cost;
  }

  /// Nothing where the effort was spent or the run was given up.
  std::optional<Leg> run_leg(const Place& place) {
    const NetworkState& from = place.state;
    const std::optional<NetworkPlan>& followed = place.followed;
    const int end = std::max(0, from.count_left - options_.stretch);
    const int handover = end == 0 ? 0 : from.count_left - options_.stretch / 2;
    const bool vary = followed && rng_.chance(options_.alike);
    NetworkPlan plan = vary ? plans_.varied(*followed, rng_) : plans_.draw(rng_);
    plan.settings.narrow = options_.narrow;
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
        if (state.count_left <= handover) {
          leg.state = state;
          leg.place = state.frame.hash() ^ Rng::mixed(state.served);
        }
      }
      if (!meter_.step()) return std::nullopt;
      const int to_come = state.count_left - end;
      if (to_come > 0 && is_in_vain(static_cast<double>(place.gates.size()) + gates, to_come)) {
        return std::nullopt;
      }
    }
    leg.cost = gates;
    leg.pace = static_cast<double>(gates) / (from.count_left - state.count_left);
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
  std::vector<Leg> best_;  // ascending by costs
  double gate_ = 0;        // its costs that one gate stands for
};

}  // namespace

std::optional<std::vector<Gate>> relay_gates(const RotationList& list, const RelayOptions& options,
                                             const std::vector<Gate>& prefix,
                                             const NetworkPlans& plans, Rng& rng, Meter& meter) {
  return Relay(list, options, plans, rng, meter).run(prefix);
}

}  // namespace zelt::braidwerk::internal
