#include "zeltbraidwerk/pauli/search/internal/network_search.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <tuple>
#include <utility>

#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/pauli/search/internal/diagonal_network.h"
#include "zeltbraidwerk/pauli/search/internal/ladders.h"
#include "zeltbraidwerk/pauli/search/internal/network_bound.h"
#include "zeltbraidwerk/pauli/search/internal/network_circuit.h"
#include "zeltbraidwerk/pauli/search/internal/network_closing.h"
#include "zeltbraidwerk/pauli/search/internal/network_plans.h"
#include "zeltbraidwerk/pauli/search/internal/network_problem.h"
#include "zeltbraidwerk/pauli/search/internal/network_relay.h"
#include "zeltbraidwerk/pauli/search/internal/network_walk.h"
#include "zeltbraidwerk/search/internal/beam.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {
namespace {

/// A way to serve all rotations.
struct Network {
  std::vector<NetworkEvent> events;
  std::vector<int> wires;
  int open = 0;  // gates before the last rotation
  int count = 0;
  int depth = 0;
};

class NetworkSearch {
 public:
  NetworkSearch(const Rotations& rotations, const NetworkOptions& options, const Effort& effort)
      : rotations_(rotations),
        options_(options),
        meter_(effort, options.by_depth),
        rng_(options.seed, options.stream),
        plans_(options.in_order, options.end != NetworkEnd::open, options.graph != nullptr,
               qubits()),
        given_(rotations.frame, rows(false)),
        sorted_(rotations.frame, rows(true)) {
    meter_.prove(bound_of_network(rotations.frame, options));
  }

  NetworkResult run() {
    run_greedily();
    if (!meter_.proven()) run_ladders();
    if (!meter_.ended()) {
      const int least =
          fewest_network_gates(rotations_.frame, options_, meter_.bound().count, best_->count);
      meter_.prove({least, layers_to_hold(least, qubits())});
    }
    for (int cycle = 0; best_->count > 0 && meter_.step(); ++cycle) {
      walk(cycle);
      if (is_long()) run_relays(cycle);
      run_beams(cycle);
    }
    return result();
  }

 private:
  int qubits() const { return rotations_.frame.qubits(); }
  /// So long that a relay of greedy runs does better than most beams.
  bool is_long() const { return given_.count() >= 300; }
  /// So long that a greedy run takes more than a second or two: on a device many strings are looked
  /// at for every gate, for every wire.
  bool is_slow() const {
    return options_.graph != nullptr && 1e-6 * given_.count() * qubits() * qubits() > 1;
  }
  std::vector<int> rows(bool sorted) const;
  const RotationList& list(const NetworkPlan& plan) const { return plan.sorted ? sorted_ : given_; }

  void run_greedily();
  void run_ladders();
  void run_beams(int cycle);
  void walk(int cycle);
  void run_relays(int cycle);
  void run_beam(const NetworkPlan& plan, const std::vector<Gate>& prefix, int width);
  std::vector<Gate> random_prefix();
  Network finished(NetworkProblem& problem, const std::vector<Gate>& prefix,
                   const std::vector<Gate>& gates, std::uint64_t before);
  Network measured(std::vector<NetworkEvent> events, std::vector<int> wires) const;
  Network closed(const std::vector<NetworkEvent>& events, const LabelFrame& frame,
                 std::uint64_t steps);
  void keep(Network network);
  NetworkResult result() const;

  const Rotations& rotations_;
  NetworkOptions options_;
  Meter meter_;
  Rng rng_;
  NetworkPlans plans_;
  RotationList given_;
  RotationList sorted_;
  int first_ = 0;                   // gates of the best of the runs that are always made
  std::optional<Network> best_;     // of fewest gates: the search goes on from it
  std::optional<Network> shallow_;  // of fewest layers
};

/// Those that turn anything.
std::vector<int> NetworkSearch::rows(bool sorted) const {
  std::vector<int> rows;
  for (int row = 0; row < rotations_.frame.rows(); ++row) {
    if (rotations_.frame.weight(row) != 0) rows.push_back(row);
  }
  if (sorted) {
    std::vector<PauliLetters> letters;
    for (int row = 0; row < rotations_.frame.rows(); ++row) {
      letters.push_back(rotations_.frame.letters(row));
    }
    std::ranges::stable_sort(rows, [&](int a, int b) {
      return letters[static_cast<std::size_t>(a)] < letters[static_cast<std::size_t>(b)];
    });
  }
  return rows;
}

/// The first ones whatever the effort.
void NetworkSearch::run_greedily() {
  const int always = is_slow() ? 1 : options_.in_order ? 3 : 4;
  const bool long_without_emphasis = options_.graph == nullptr && given_.count() > 1000;
  int runs = 0;
  for (const NetworkPlan& plan : plans_.first()) {
    if (plan.settings.emphasis == Emphasis::equal && long_without_emphasis) continue;
    if (meter_.proven() || (runs++ >= always && meter_.ended())) return;
    NetworkProblem problem(list(plan), options_.in_order, plan.settings, options_.graph, rng_);
    std::vector<NetworkEvent> events;
    NetworkState state = problem.start(&events);
    while (!problem.done(state)) {
      problem.play_best(state, &events);
      if (!meter_.step() && runs > always) return;
    }
    Network network = closed(events, state.frame, 0);
    plans_.report(plan, network.count);
    keep(std::move(network));
    if (runs <= always) first_ = best_->count;
  }
}

/// So that no list costs more than one rotation after the other, which is hard to beat where
/// strings are light. Where they are not, ladders are not worth the time.
void NetworkSearch::run_ladders() {
  const std::vector<Gate> gates = ladders(given_, options_.graph);
  if (static_cast<std::size_t>(first_) < gates.size() / 2) return;
  NetworkProblem problem(given_, options_.in_order, plans_.first()[0].settings, options_.graph,
                         rng_);
  std::vector<NetworkEvent> events;
  NetworkState state = problem.start(&events);
  for (const Gate& gate : gates) problem.play(state, gate, &events);
  cancel_pairs(events);
  keep(closed(events, state.frame, 0));
}

/// The gates of the best network up to a random one.
std::vector<Gate> NetworkSearch::random_prefix() {
  std::vector<Gate> prefix;
  const int cut = rng_.below(best_->open + 1);
  for (const NetworkEvent& event : best_->events) {
    if (static_cast<int>(prefix.size()) == cut) break;
    if (event.row < 0) prefix.push_back(event.gate);
  }
  return prefix;
}

/// Some from the start, then some from random gates of the best network.
void NetworkSearch::run_relays(int cycle) {
  constexpr int from_start = 2;
  constexpr int from_gates = 3;
  RelayOptions options;
  options.in_order = options_.in_order;
  options.graph = options_.graph;
  options.alike = options_.in_order ? 0 : 0.8F;
  options.runs = 8 << std::min(cycle, 3);
  for (int run = 0; run < from_start + from_gates && !meter_.ended(); ++run) {
    const std::vector<Gate> prefix = run < from_start ? std::vector<Gate>() : random_prefix();
    const RotationList& rows = list(plans_.draw(rng_));
    options.stretch = 30 + rng_.below(50);
    options.known = options_.in_order ? best_->count : 0;  // in any order it does not help
    const std::uint64_t before = meter_.steps();
    const auto gates = run_relay(rows, options, prefix, plans_, rng_, meter_);
    if (!gates) return;
    NetworkProblem problem(rows, options_.in_order, plans_.first()[0].settings, options_.graph,
                           rng_);
    keep(finished(problem, prefix, *gates, before));
  }
}

/// Some beams from the start, then some from random gates of the best network.
void NetworkSearch::run_beams(int cycle) {
  const int from_start = is_long() ? 1 : 3;
  const int from_gates = is_long() ? 2 : 6;
  const int width = 4 << std::min(cycle, 5);
  for (int run = 0; run < from_start + from_gates && !meter_.ended(); ++run) {
    const NetworkPlan plan = plans_.draw(rng_);
    run_beam(plan, run < from_start ? std::vector<Gate>() : random_prefix(), width);
  }
}

void NetworkSearch::run_beam(const NetworkPlan& plan, const std::vector<Gate>& prefix, int width) {
  NetworkProblem problem(list(plan), options_.in_order, plan.settings, options_.graph, rng_);
  NetworkState start = problem.start();
  for (const Gate& gate : prefix) problem.play(start, gate);
  BeamOptions options;
  options.width = width;
  options.patience = 30 + qubits();
  options.noise = 16;
  const std::uint64_t before = meter_.steps();
  BeamSearch<NetworkProblem> beam(problem, options, rng_, meter_);
  const auto all = beam.run(start);
  if (meter_.ended()) return;  // with more effort tails would be closed with more of it
  for (const auto& found : all) {
    std::vector<Gate> gates;
    for (const auto& move : found.moves) gates.push_back(move.gate);
    Network network = finished(problem, prefix, gates, before);
    if (prefix.empty()) plans_.report(plan, network.count);
    keep(std::move(network));
  }
}

/// With a tail for which an eighth of the steps since `before` are taken.
Network NetworkSearch::finished(NetworkProblem& problem, const std::vector<Gate>& prefix,
                                const std::vector<Gate>& gates, std::uint64_t before) {
  std::vector<NetworkEvent> events;
  NetworkState state = problem.start(&events);
  for (const Gate& gate : prefix) problem.play(state, gate, &events);
  for (const Gate& gate : gates) problem.play(state, gate, &events);
  return closed(events, state.frame,
                std::min((meter_.steps() - before) / 8, std::uint64_t{1} << 14));
}

/// Longer with every cycle, each time from the best network.
void NetworkSearch::walk(int cycle) {
  constexpr std::uint64_t steps_an_event = 8;
  const Network from = *best_;
  const std::uint64_t steps = steps_an_event * from.events.size() << std::min(cycle, 6);
  NetworkWalk walk(from.events, qubits(), options_.in_order, options_.end == NetworkEnd::open,
                   options_.graph);
  constexpr Cooling cooling;
  int least = from.count;
  for (std::uint64_t k = 0; k < steps; ++k) {
    const float uphill = cooling.at(static_cast<double>(k) / static_cast<double>(steps));
    if (walk.step(uphill, rng_) && walk.count() < least) {
      least = walk.count();
      keep(measured(walk.events(), from.wires));
    }
    if (!meter_.step()) return;  // with more effort the walk would have ended elsewhere
  }
  keep(measured(walk.events(), from.wires));
}

/// With its tail, for which so many steps are taken, and the qubits where they are to stand.
Network NetworkSearch::closed(const std::vector<NetworkEvent>& events, const LabelFrame& frame,
                              std::uint64_t steps) {
  std::vector<int> wires(static_cast<std::size_t>(qubits()));
  std::iota(wires.begin(), wires.end(), 0);
  if (options_.end == NetworkEnd::open) return measured(events, std::move(wires));
  Effort effort;
  effort.control = meter_.control();
  effort.steps = steps;
  const bool in_place = options_.end == NetworkEnd::closed;
  std::optional<Network> best;
  const auto consider = [&](NetworkTail tail) {
    std::vector<NetworkEvent> whole = events;
    for (const Gate& gate : tail.gates) whole.push_back({gate, -1});
    cancel_pairs(whole);
    if (in_place && swaps_of(tail.wires) > 0) {
      take_in_swaps(whole, tail.wires, rng_);
      tail.wires = wires;
    }
    Network network = measured(std::move(whole), std::move(tail.wires));
    if (!best || network.count < best->count) best = std::move(network);
  };
  if (options_.graph == nullptr) {
    consider(close_tail(frame, Outputs::free, nullptr, rng_.next(), effort));
  }
  if (in_place || options_.graph != nullptr) {
    const Outputs outputs = in_place ? Outputs::in_place : Outputs::free;
    consider(close_tail(frame, outputs, options_.graph, rng_.next(), effort));
  }
  if (options_.graph != nullptr) consider(undo(events, qubits()));
  return std::move(*best);
}

Network NetworkSearch::measured(std::vector<NetworkEvent> events, std::vector<int> wires) const {
  Network network{std::move(events), std::move(wires), 0, 0, 0};
  while (options_.end == NetworkEnd::open && !network.events.empty() &&
         network.events.back().row < 0) {
    network.events.pop_back();
  }
  for (const NetworkEvent& event : network.events) {
    if (event.row < 0) {
      ++network.count;
    } else {
      network.open = network.count;
    }
  }
  network.depth = depth_of(network.events, qubits());
  return network;
}

/// Where it is no worse than the best, so that searches go on from another one.
void NetworkSearch::keep(Network network) {
  const auto count_first = [](const Network& n) { return std::tuple(n.count, n.depth); };
  const auto depth_first = [](const Network& n) { return std::tuple(n.depth, n.count); };
  const auto found = std::tuple(network.count, network.depth);
  bool better = false;
  if (!shallow_ || depth_first(network) < depth_first(*shallow_)) {
    better = options_.by_depth;
    shallow_ = network;
  }
  if (!best_ || count_first(network) <= count_first(*best_)) {
    better |= !options_.by_depth && (!best_ || count_first(network) < count_first(*best_));
    best_ = std::move(network);
  }
  if (better) meter_.better(std::get<0>(found), std::get<1>(found));
}

NetworkResult NetworkSearch::result() const {
  const Network& network = options_.by_depth ? *shallow_ : *best_;
  const int n = qubits();
  NetworkResult result{{}, network.wires, network.count, network.depth};
  PauliFrame images = identity_images(n);
  result.gates = circuit_of(network.events, rotations_, images);
  if (options_.end != NetworkEnd::open) {
    // What is left to undo is on single wires.
    for (structures::Gate& gate : eliminate_clifford(std::move(images), false).gates) {
      result.gates.push_back(std::move(gate));
    }
  }
  return result;
}

}  // namespace

NetworkResult search_network(const Rotations& rotations, const NetworkOptions& options,
                             const Effort& effort) {
  if (options.graph != nullptr) require_connected(*options.graph, rotations.frame.qubits());
  if (!is_locally_diagonal(rotations.frame)) return NetworkSearch(rotations, options, effort).run();
  // The first runs do better on few light rotations, the search for parities on all others.
  Effort none = effort;
  none.steps = 0;
  NetworkResult first = NetworkSearch(rotations, options, none).run();
  LowerBound bound = bound_of_network(rotations.frame, options);
  if (effort.steps > 0) {
    const int least = fewest_network_gates(rotations.frame, options, bound.count, first.count);
    bound.raise({least, layers_to_hold(least, rotations.frame.qubits())});
    if (effort.on_bound) effort.on_bound(bound);
  }
  if (first.count <= bound.count && first.depth <= bound.depth) return first;
  Effort parities = effort;
  parities.on_bound = nullptr;  // what networks of parities take, others might not
  NetworkResult found = search_diagonal_network(rotations, options, parities);
  const auto size = [&](const NetworkResult& result) {
    const std::pair both(result.count, result.depth);
    return options.by_depth ? std::pair(both.second, both.first) : both;
  };
  return size(found) < size(first) ? found : first;
}

}  // namespace zelt::braidwerk::internal
