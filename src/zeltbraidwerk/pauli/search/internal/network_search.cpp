#include "zeltbraidwerk/pauli/search/internal/network_search.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <tuple>

#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/pauli/search/internal/ladders.h"
#include "zeltbraidwerk/pauli/search/internal/network_circuit.h"
#include "zeltbraidwerk/pauli/search/internal/network_closing.h"
#include "zeltbraidwerk/pauli/search/internal/network_plans.h"
#include "zeltbraidwerk/pauli/search/internal/network_problem.h"
#include "zeltbraidwerk/search/internal/beam.h"

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
        meter_(effort),
        rng_(options.seed, options.stream),
        plans_(options.in_order, options.end != NetworkEnd::open, qubits()),
        given_(rotations.frame, rows(false)),
        sorted_(rotations.frame, rows(true)) {}

  NetworkResult run() {
    run_greedily();
    run_ladders();
    for (int cycle = 0; best_->count > 0 && meter_.step(); ++cycle) run_beams(cycle);
    return result();
  }

 private:
  int qubits() const { return rotations_.frame.qubits(); }
  std::vector<int> rows(bool sorted) const;
  const RotationList& list(const NetworkPlan& plan) const { return plan.sorted ? sorted_ : given_; }

  void run_greedily();
  void run_ladders();
  void run_beams(int cycle);
  void run_beam(const NetworkPlan& plan, const std::vector<Gate>& prefix, int width);
  std::vector<NetworkEvent> in_place(const Network& network, int ways) const;
  Network closed(std::vector<NetworkEvent> events, const LabelFrame& frame, std::uint64_t effort);
  void keep(Network network);
  NetworkResult result() const;

  const Rotations& rotations_;
  NetworkOptions options_;
  Meter meter_;
  Rng rng_;
  NetworkPlans plans_;
  RotationList given_;
  RotationList sorted_;
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

void NetworkSearch::run_greedily() {
  for (const NetworkPlan& plan : plans_.first()) {
    if (best_ && meter_.ended()) return;
    NetworkProblem problem(list(plan), options_.in_order, plan.settings, options_.graph, rng_);
    std::vector<NetworkEvent> events;
    NetworkState state = problem.start(&events);
    problem.finish_greedily(state, events, meter_);
    Network network = closed(std::move(events), state.frame, 0);
    plans_.report(plan, network.count);
    keep(std::move(network));
  }
}

/// So that no list costs more than one rotation after the other, which is hard to beat where
/// strings are light.
void NetworkSearch::run_ladders() {
  NetworkProblem problem(given_, options_.in_order, plans_.first()[0].settings, options_.graph,
                         rng_);
  std::vector<NetworkEvent> events;
  NetworkState state = problem.start(&events);
  for (const Gate& gate : ladders(given_, options_.graph)) {
    problem.play(state, gate, &events);
  }
  cancel_pairs(events);
  keep(closed(std::move(events), state.frame, 0));
}

/// Some beams from the start, then some from random gates of the best network.
void NetworkSearch::run_beams(int cycle) {
  constexpr int from_start = 3;
  constexpr int from_gates = 6;
  const int width = 4 << std::min(cycle, 5);
  for (int run = 0; run < from_start + from_gates && !meter_.ended(); ++run) {
    const NetworkPlan plan = plans_.draw(rng_);
    std::vector<Gate> prefix;
    if (run >= from_start) {
      const int cut = rng_.below(best_->open + 1);
      for (const NetworkEvent& event : best_->events) {
        if (static_cast<int>(prefix.size()) == cut) break;
        if (event.row < 0) prefix.push_back(event.gate);
      }
    }
    run_beam(plan, prefix, width);
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
  for (const auto& finished : beam.run(start)) {
    std::vector<NetworkEvent> events;
    NetworkState state = problem.start(&events);
    for (const Gate& gate : prefix) problem.play(state, gate, &events);
    for (const auto& move : finished.moves) problem.play(state, move.gate, &events);
    const std::uint64_t effort = std::min((meter_.steps() - before) / 8, std::uint64_t{1} << 14);
    Network network = closed(std::move(events), state.frame, effort);
    if (prefix.empty()) plans_.report(plan, network.count);
    keep(std::move(network));
  }
}

/// With its tail, for which so many steps are taken.
Network NetworkSearch::closed(std::vector<NetworkEvent> events, const LabelFrame& frame,
                              std::uint64_t steps) {
  Network network{std::move(events), std::vector<int>(static_cast<std::size_t>(qubits())), 0, 0, 0};
  std::iota(network.wires.begin(), network.wires.end(), 0);
  if (options_.end != NetworkEnd::open) {
    Effort effort;
    effort.control = meter_.control();
    effort.steps = steps;
    NetworkTail tail = options_.graph == nullptr ? close_tail(frame, rng_.next(), effort)
                                                 : undo(network.events, qubits());
    for (const Gate& gate : tail.gates) network.events.push_back({gate, -1});
    network.wires = std::move(tail.wires);
  }
  cancel_pairs(network.events);
  for (int gates = 0; const NetworkEvent& event : network.events) {
    if (event.row < 0) {
      ++gates;
    } else {
      network.open = gates;
    }
  }
  while (options_.end == NetworkEnd::open && !network.events.empty() &&
         network.events.back().row < 0) {
    network.events.pop_back();
  }
  const std::vector<NetworkEvent> whole = in_place(network, 1);
  network.count = gates_of(whole);
  network.depth = depth_of(whole, qubits());
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

/// The events with the qubits where they are to stand at the end.
std::vector<NetworkEvent> NetworkSearch::in_place(const Network& network, int ways) const {
  std::vector<NetworkEvent> events = network.events;
  if (options_.end == NetworkEnd::closed) {
    Rng rng(options_.seed, options_.stream);
    take_in_swaps(events, network.wires, options_.by_depth, ways, rng);
  }
  return events;
}

NetworkResult NetworkSearch::result() const {
  constexpr int ways = 24;
  const Network& network = options_.by_depth ? *shallow_ : *best_;
  const std::vector<NetworkEvent> events = in_place(network, ways);
  const int n = qubits();
  NetworkResult result;
  PauliFrame images = identity_images(n);
  result.gates = circuit_of(events, rotations_, images);
  result.count = gates_of(events);
  result.depth = depth_of(events, n);
  result.wires = network.wires;
  if (options_.end == NetworkEnd::closed) std::iota(result.wires.begin(), result.wires.end(), 0);
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
  return NetworkSearch(rotations, options, effort).run();
}

}  // namespace zelt::braidwerk::internal
