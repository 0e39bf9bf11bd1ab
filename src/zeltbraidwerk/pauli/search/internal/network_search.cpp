#include "zeltbraidwerk/pauli/search/internal/network_search.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

#include "zeltbraidwerk/pauli/search/internal/network_beams.h"
#include "zeltbraidwerk/pauli/search/internal/network_blocks.h"
#include "zeltbraidwerk/pauli/search/internal/network_bound.h"
#include "zeltbraidwerk/pauli/search/internal/network_circuit.h"
#include "zeltbraidwerk/pauli/search/internal/network_run.h"
#include "zeltbraidwerk/pauli/search/internal/network_starts.h"
#include "zeltbraidwerk/pauli/search/internal/network_walk.h"
#include "zeltbraidwerk/pauli/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/driver.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr const NetworkTuning& tuning = network_tuning;

/// Greedy runs, ladders and blocks first; then in turns walks and beams, wider and longer each
/// round. Of equally short networks the latest is walked from.
class NetworkSearch : public SearchByBoth<Network> {
 public:
  NetworkSearch(const NetworkInput& input, const NetworkTask& task, const Effort& effort)
      : SearchByBoth(task, effort, Ties::latest),
        input_(input),
        plans_(task, input.qubits()),
        run_{input, task, plans_, rng_, meter_} {
    effort_of_blocks_.steps = 0;
  }

  /// Rounds go by their number alone.
  Schedule schedule() const { return {.first_steps = 1, .growth = 1}; }

  void first() {
    const PauliFrame& strings = input_.rotations.frame;
    // Bounds of closed networks are those of networks that close to the identity.
    NetworkTask proven_of = run_.task;
    if (run_.task.target != nullptr) proven_of.outputs = Outputs::left_open;
    meter_.prove(bound_of_network(strings, proven_of));
    if (run_.task.given != nullptr) offer_first(*run_.task.given);
    run_plans();
    if (!meter_.proven()) offer_ladders();
    if (!meter_.ended()) {
      const int least =
          fewest_network_gates(strings, proven_of, meter_.bound().count, shortest().size.count);
      meter_.prove({least, layers_to_hold(least, input_.qubits())});
    }
    proven_ = meter_.proven();
    if (!proven_ && run_.task.target == nullptr) share_with_blocks();
  }

  bool finished() const { return proven_ || shortest().size.count == 0; }

  void round(const Round& round) {
    if (!meter_.step()) return;
    walk(round.number, false);
    if (task_.by_depth() && !meter_.ended()) walk(round.number, true);
    if (input_.is_long()) run_relays(round.number);
    if (!seconds_to_share()) run_beams(round.number);
  }

  /// After the last round.
  void search_shared_blocks() {
    if (effort_of_blocks_.steps > 0 && !meter_.proven()) run_blocks(effort_of_blocks_);
  }

 private:
  int measure(const Network& network) const {
    return task_.by_depth() ? network.size.depth : network.size.count;
  }
  void offer(const Network& network, Origin origin) {
    if (network.size.depth > run_.task.most_layers) return;
    SearchByBoth::offer(network, network.size, origin);
  }
  void offer_first(const Network& network) {
    least_first_ = std::min(least_first_, measure(network));
    offer(network, Origin::certain);
  }

  /// The first plans; some of them whatever the effort.
  void run_plans() {
    const int always = run_.task.given != nullptr ? 0
                       : input_.is_slow(task_)    ? tuning.first_runs_if_slow
                       : run_.task.in_order       ? tuning.first_runs_in_order
                                                  : tuning.first_runs;
    const bool too_long = task_.device == nullptr && input_.given.count() > tuning.most_for_equal;
    int runs = 0;
    for (const NetworkPlan& plan : plans_.first()) {
      if (too_long && plan.settings.emphasis == Emphasis::equal) continue;
      const bool whatever_effort = runs++ < always;
      if (!whatever_effort && !rng_of_ladders_) rng_of_ladders_ = rng_;
      if (meter_.proven() || (!whatever_effort && meter_.ended())) return;
      const std::optional<Network> network = run_greedily(run_, plan, whatever_effort);
      if (!network) return;
      plans_.report(plan, network->size.count);
      whatever_effort ? offer_first(*network) : offer(*network, Origin::derived);
    }
  }

  /// Made with any effort, so that their draws are those after the runs that are made with any. To
  /// a target, where draws decide on the closing, others beside them.
  void offer_ladders() {
    const bool all_plans = !meter_.ended();
    if (all_plans) {
      for (const Network& network : run_ladders(run_, least_first_)) offer_first(network);
    }
    if (all_plans && run_.task.target == nullptr) return;
    const Rng now = std::exchange(rng_, rng_of_ladders_.value_or(rng_));
    for (const Network& network : run_ladders(run_, least_first_)) offer_first(network);
    rng_ = now;
  }

  void share_with_blocks() {
    if (!are_worth_it(input_.blocks)) return;
    Effort none = meter_.effort();
    none.steps = 0;
    const int of_blocks = run_blocks(none);
    switch (share_of_blocks(input_, task_, of_blocks, least_first_)) {
      case BlockShare::all:
        effort_of_blocks_ = meter_.give_all();
        break;
      case BlockShare::half:
        effort_of_blocks_ = meter_.give_half();
        break;
      case BlockShare::none:
        break;
    }
  }
  /// With an effort of its own, so that what comes of it never depends on the other parts.
  int run_blocks(Effort effort) {
    effort.on_bound = nullptr;  // what networks of blocks take, others might not
    const Network network = search_blocks(input_, run_.task, effort);
    offer(network, Origin::certain);
    return measure(network);
  }

  /// Longer with every round, each time from the best network; with `by_layers` from the one of
  /// fewest layers, to others that have no more.
  void walk(int round, bool by_layers) {
    const Network from = by_layers ? shallowest() : shortest();
    const Origin origin = by_layers ? Origin::lowering_depth : Origin::lowering_count;
    const Cooling cooling = run_.task.target == nullptr ? tuning.cooling : drawn_cooling(rng_);
    const std::uint64_t usual = tuning.walk_steps_of_event * from.events.size()
                                << std::min(round, tuning.most_walk_doublings);
    const std::uint64_t steps = by_layers ? usual : std::max(usual, walk_steps_in_time());
    const double began = meter_.seconds();
    NetworkWalk walk(
        from.events, input_.qubits(), run_.task.in_order, !task_.closes(), task_.device,
        run_.task.target == nullptr ? tuning.walk_patience : network_target_tuning.walk_patience);
    const auto offer_walked = [&](Origin how) {
      offer(network_of(walk.events(), from.wires, task_.closes()), how);
    };
    int least = by_layers ? from.size.depth : from.size.count;
    for (std::uint64_t k = 0; k < steps; ++k) {
      const float uphill = cooling.at(static_cast<double>(k) / static_cast<double>(steps));
      const bool changed = walk.step(uphill, rng_, by_layers ? least : run_.task.most_layers);
      if (const int now = by_layers ? walk.depth() : walk.count(); changed && now < least) {
        least = now;
        offer_walked(origin);
      }
      if (!meter_.step()) return;
    }
    offer_walked(Origin::derived);
    if (by_layers || steps == 0) return;
    walk_ended_ = meter_.seconds();
    seconds_of_walk_step_ = (walk_ended_ - began) / static_cast<double>(steps);
  }
  /// Where they are known and the list is long: relays and walks then share them.
  std::optional<double> seconds_to_share() const {
    return input_.is_long() && !task_.by_depth() ? meter_.seconds_left() : std::nullopt;
  }
  /// A share of the time is a lower bound: a step of a relay takes as long as many of a walk.
  std::uint64_t walk_steps_in_time() const {
    const std::optional<double> left = seconds_to_share();
    if (!left || seconds_of_walk_step_ <= 0) return 0;
    const double share = tuning.walk_time * (meter_.seconds() - walk_ended_);
    const double seconds = no_more_relays_ ? *left : std::min(share, *left);
    return static_cast<std::uint64_t>(std::max(seconds, 0.0) / seconds_of_walk_step_);
  }

  /// Some from the start, then some from random gates of the best network.
  void run_relays(int round) {
    if (const std::optional<double> left = seconds_to_share()) {
      run_wide_relays(round, *left);
      return;
    }
    const int runs = tuning.relay_runs << std::min(round, tuning.most_relay_doublings);
    const int all = tuning.relays_from_start + tuning.relays_from_gates;
    for (int k = 0; k < all && !meter_.ended(); ++k) {
      if (!run_relay_of_width(prefix_of(k, tuning.relays_from_start), runs, 1)) return;
    }
  }
  /// A narrow one to see how long it takes, and ones from the start that are as wide as a share of
  /// the time allows. In later rounds one from random gates of the best network, until there is no
  /// time for it: then the rest is left to walks.
  void run_wide_relays(int round, double left) {
    const int runs = tuning.relay_runs;
    if (round > 0) {
      const std::vector<Gate> prefix = random_prefix(shortest(), rng_);
      const double open =
          1 - static_cast<double>(prefix.size()) / std::max(shortest().size.count, 1);
      const double narrow = seconds_of_relay_ * open;
      no_more_relays_ = tuning.relay_margin * narrow > left;
      if (no_more_relays_) return;
      run_relay_of_width(prefix, runs, width_in(tuning.relay_time_from_gates * left, narrow));
      return;
    }
    const double began = meter_.seconds();
    if (!run_relay_of_width({}, runs, 1)) return;
    seconds_of_relay_ = meter_.seconds() - began;
    left -= seconds_of_relay_;
    for (double share = tuning.relay_time * left; !meter_.ended();) {
      if (tuning.relay_margin * seconds_of_relay_ > share) return;
      const int width = width_in(share, seconds_of_relay_);
      const double before = meter_.seconds();
      if (!run_relay_of_width({}, runs, width)) return;
      const double seconds = meter_.seconds() - before;
      share -= seconds;
      // What is left is too little for another one that is half as wide at least.
      if (share < seconds / 2) return;
    }
  }
  static int width_in(double seconds, double narrow) {
    return static_cast<int>(std::clamp(seconds / std::max(narrow, 1e-6), 1.0,
                                       static_cast<double>(tuning.most_relay_width)));
  }
  bool run_relay_of_width(const std::vector<Gate>& prefix, int runs, int width) {
    // What is left is judged in order alone: in any order it does not help.
    const int known = run_.task.in_order ? shortest().size.count : 0;
    const std::optional<Network> network = run_relay(run_, prefix, runs, width, known);
    if (network) offer(*network, Origin::derived);
    return network.has_value();
  }

  /// Some from the start, then some from random gates of the best network.
  void run_beams(int round) {
    const bool is_long = input_.is_long();
    const int from_start = is_long ? tuning.beams_from_start_if_long : tuning.beams_from_start;
    const int from_gates = is_long ? tuning.beams_from_gates_if_long : tuning.beams_from_gates;
    const int width = tuning.beam_width << std::min(round, tuning.most_beam_doublings);
    for (int k = 0; k < from_start + from_gates && !meter_.ended(); ++k) {
      const NetworkPlan plan = plans_.draw(rng_);
      const std::vector<Gate> prefix = prefix_of(k, from_start);
      const std::optional<Network> network = run_beam(run_, plan, prefix, width);
      if (!network) continue;
      if (prefix.empty()) plans_.report(plan, network->size.count);
      offer(*network, Origin::derived);
    }
  }
  std::vector<Gate> prefix_of(int k, int from_start) {
    return k < from_start ? std::vector<Gate>() : random_prefix(shortest(), rng_);
  }

  const NetworkInput& input_;
  NetworkPlans plans_;
  NetworkRun run_;
  int least_first_ = std::numeric_limits<int>::max();  // of the runs made whatever the effort
  std::optional<Rng> rng_of_ladders_;                  // as it was after these runs
  Effort effort_of_blocks_;
  bool proven_ = false;
  double walk_ended_ = 0;  // the last one by count, in seconds
  double seconds_of_walk_step_ = 0;
  double seconds_of_relay_ = 0;  // a narrow one from the start
  bool no_more_relays_ = false;
};

struct Answer {
  Network network;
  bool proven;
};

Answer answer_of(const NetworkInput& input, const NetworkTask& task, const Effort& effort) {
  NetworkSearch search(input, task, effort);
  run_search(search);
  try {
    search.search_shared_blocks();
  } catch (const Stopped&) {
    // What the rounds have found stands.
  }
  return {search.incumbent().circuit(), search.meter().proven()};
}

PlacedCircuit result_of(const Network& network, const Rotations& rotations, const NetworkTask& task,
                        bool closes) {
  const StopScope::Suspended to_the_end;
  return {circuit_of(network, rotations, task, closes), network.wires, network.size};
}

}  // namespace

Network search_events(const Rotations& rotations, const NetworkTask& task, const Effort& effort) {
  return answer_of(NetworkInput(rotations, task.in_order), task, effort).network;
}

PlacedCircuit search_network(const Rotations& rotations, const NetworkTask& task,
                             const Effort& effort) {
  if (task.device != nullptr) require_connected(*task.device, rotations.frame.qubits());
  const NetworkInput input(rotations, task.in_order);
  if (!is_closed_anyhow(input, task)) {
    return result_of(answer_of(input, task, effort).network, rotations, task, task.closes());
  }
  // Searched as closed as well, for as many steps: an open end is never longer than a closed one.
  Effort half = effort;
  half.control = effort.control.for_half_the_time();
  const Answer open = answer_of(input, task, half);
  if (open.proven) return result_of(open.network, rotations, task, false);
  NetworkTask closed_task = task;
  closed_task.outputs = Outputs::in_place;
  closed_task.given = nullptr;
  Effort rest = effort;
  rest.on_bound = nullptr;  // what closed networks take, open ones might not
  Answer closed = open;
  try {
    closed = answer_of(input, closed_task, rest);
  } catch (const Stopped&) {
    // The open one stands.
  }
  const bool is_better =
      closed.network.size.key(task.objective) < open.network.size.key(task.objective);
  return is_better ? result_of(closed.network, rotations, task, true)
                   : result_of(open.network, rotations, task, false);
}

}  // namespace zelt::braidwerk::internal
