#include "zeltbraidwerk/pauli/search/internal/network_search.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <tuple>
#include <utility>

#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/pauli/search/internal/diagonal_blocks.h"
#include "zeltbraidwerk/pauli/search/internal/ladders.h"
#include "zeltbraidwerk/pauli/search/internal/network_bound.h"
#include "zeltbraidwerk/pauli/search/internal/network_circuit.h"
#include "zeltbraidwerk/pauli/search/internal/network_closing.h"
#include "zeltbraidwerk/pauli/search/internal/network_keeper.h"
#include "zeltbraidwerk/pauli/search/internal/network_plans.h"
#include "zeltbraidwerk/pauli/search/internal/network_problem.h"
#include "zeltbraidwerk/pauli/search/internal/network_relay.h"
#include "zeltbraidwerk/pauli/search/internal/network_walk.h"
#include "zeltbraidwerk/search/internal/beam.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {
namespace {

class NetworkSearch {
 public:
  NetworkSearch(const Rotations& rotations, const NetworkTask& task, const Effort& effort)
      : rotations_(rotations),
        task_(task),
        effort_(effort),
        meter_(effort_, task.objective),
        rng_(task.seed, task.stream),
        plans_(task.in_order, task.closes(), task.device != nullptr, qubits()),
        given_(rotations.frame, rows(false)),
        sorted_(rotations.frame, rows(true)),
        blocks_(given_, task.in_order),
        kept_(task.by_depth(), meter_) {
    meter_.prove(bound_of_network(rotations.frame, task));
  }

  NetworkResult run() {
    search();
    return result();
  }

  bool is_proven() const { return meter_.proven(); }

  /// Whether the end is open in name only: blocks of a list in layers are closed for the single
  /// letters that follow them.
  bool is_closed_anyhow() const {
    return !task_.closes() && blocks_.are_large() && blocks_.count() > 0 &&
           !blocks_.is_last(blocks_.count() - 1) && (task_.by_depth() || blocks_.count() > 1);
  }

 private:
  void search();
  void prove_by_search();
  int qubits() const { return rotations_.frame.qubits(); }
  /// So long that a relay of greedy runs does better than most beams.
  bool is_long() const { return given_.count() >= 300; }
  /// So long that a greedy run takes more than a second or two: on a device many strings are looked
  /// at for every gate, for every wire.
  bool is_slow() const {
    return task_.device != nullptr && 1e-6 * given_.count() * qubits() * qubits() > 1;
  }
  std::vector<int> rows(bool sorted) const;
  const RotationList& list(const NetworkPlan& plan) const { return plan.sorted ? sorted_ : given_; }

  void run_greedily();
  void run_ladders();
  void play_ladders(const std::vector<RotationGroup>& groups, bool shallow);
  Effort share_with_blocks();
  Network run_blocks(const Effort& effort);
  PlacedEvents search_block(std::size_t block, const Effort& effort) const;
  void run_beams(int cycle);
  void walk(int cycle, bool by_layers);
  void run_relays(int cycle);
  void run_beam(const NetworkPlan& plan, const std::vector<Gate>& prefix, int width);
  std::vector<Gate> random_prefix();
  Network finished(NetworkProblem& problem, const std::vector<Gate>& prefix,
                   const std::vector<Gate>& gates, std::uint64_t before);
  Network measured(std::vector<NetworkEvent> events, std::vector<int> wires) const;
  Network closed(const std::vector<NetworkEvent>& events, const LabelFrame& frame,
                 std::uint64_t steps);
  NetworkResult result() const;

  const Rotations& rotations_;
  NetworkTask task_;
  Effort effort_;
  Meter meter_;
  Rng rng_;
  NetworkPlans plans_;
  RotationList given_;
  RotationList sorted_;
  DiagonalBlocks blocks_;
  NetworkKeeper kept_;
};

void NetworkSearch::search() {
  run_greedily();
  if (!meter_.proven()) run_ladders();
  if (!meter_.ended()) prove_by_search();
  if (meter_.proven()) return;
  const Effort effort_of_blocks = share_with_blocks();
  for (int cycle = 0; kept_.best().count > 0 && effort_.steps > 0 && meter_.step(); ++cycle) {
    walk(cycle, false);
    if (task_.by_depth() && !meter_.ended()) walk(cycle, true);
    if (is_long()) run_relays(cycle);
    run_beams(cycle);
  }
  if (effort_of_blocks.steps > 0 && !meter_.proven()) run_blocks(effort_of_blocks);
}

void NetworkSearch::prove_by_search() {
  const int least =
      fewest_network_gates(rotations_.frame, task_, meter_.bound().count, kept_.best().count);
  meter_.prove({least, layers_to_hold(least, qubits())});
}

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
  const int always = is_slow() ? 1 : task_.in_order ? 3 : 4;
  const bool long_without_emphasis = task_.device == nullptr && given_.count() > 1000;
  int runs = 0;
  for (const NetworkPlan& plan : plans_.first()) {
    if (plan.settings.emphasis == Emphasis::equal && long_without_emphasis) continue;
    if (meter_.proven() || (runs++ >= always && meter_.ended())) return;
    NetworkProblem problem(list(plan), task_.in_order, plan.settings, task_.device, rng_);
    std::vector<NetworkEvent> events;
    NetworkState state = problem.start(&events);
    while (!problem.done(state)) {
      problem.play_best(state, &events);
      if (!meter_.step() && runs > always) return;
    }
    Network network = closed(events, state.frame, 0);
    plans_.report(plan, network.count);
    runs <= always ? kept_.offer_first(std::move(network)) : kept_.offer(std::move(network));
  }
}

/// So that no list costs more than its rotations in groups, one after the other, which is hard to
/// beat where strings are light; nor has more layers than a colouring of the groups.
void NetworkSearch::run_ladders() {
  std::vector<RotationGroup> groups;
  if (task_.device == nullptr) {
    groups = groups_of(given_, task_.in_order);
  } else {
    for (int row = 0; row < given_.count(); ++row) groups.push_back({row});
  }
  play_ladders(groups, false);
  if (task_.by_depth() && task_.device == nullptr) {
    play_ladders(by_layers(given_, std::move(groups), task_.in_order), true);
  }
}

void NetworkSearch::play_ladders(const std::vector<RotationGroup>& groups, bool shallow) {
  const std::vector<Gate> gates = ladders(given_, groups, task_.in_order, task_.device, shallow);
  // Where strings are heavy, ladders are not worth the time.
  if (!task_.by_depth() && static_cast<std::size_t>(kept_.first()) < gates.size() / 2) return;
  std::vector<int> order;
  for (const RotationGroup& group : groups) {
    for (const int row : group) order.push_back(given_.number(row));
  }
  const RotationList grouped(rotations_.frame, std::move(order));
  NetworkProblem problem(grouped, task_.in_order, plans_.first()[0].settings, task_.device, rng_);
  std::vector<NetworkEvent> events;
  NetworkState state = problem.start(&events);
  for (const Gate& gate : gates) problem.play(state, gate, &events);
  cancel_pairs(events);
  kept_.offer_first(closed(events, state.frame, 0));
}

/// Takes from the effort what the search of the blocks gets: all where there is one block, or where
/// they take hardly more gates to begin with, as they gain more by it than other ways; none where
/// they take many more, half of it otherwise. Only runs that are made with any effort decide.
Effort NetworkSearch::share_with_blocks() {
  Effort share = effort_;
  share.steps = 0;
  share.on_bound = nullptr;  // what networks of blocks take, others might not
  if (blocks_.count() == 0 || !blocks_.are_large()) return share;
  const int own = kept_.size(run_blocks(share));
  const int first = kept_.first();
  // Layers of several blocks do not add up: more effort for each could make more of them.
  if (task_.by_depth() && blocks_.count() > 1) return share;
  if (task_.by_depth() ? own <= first : blocks_.count() == 1 || own <= 1.1 * first) {
    share.steps = std::exchange(effort_.steps, 0);
    meter_.cut(effort_.steps);
  } else if (own <= 1.25 * first) {
    share.steps = effort_.steps / 2;
    effort_.steps -= share.steps;
    meter_.cut(effort_.steps);
    if (effort_.control.deadline) {
      const auto now = Control::Clock::now();
      effort_.control.deadline = now + (*effort_.control.deadline - now) / 2;
    }
  }
  return share;
}

/// As it is kept.
Network NetworkSearch::run_blocks(const Effort& effort) {
  PlacedEvents all = blocks_.search(
      [this](std::size_t block, const Effort& share) { return search_block(block, share); },
      effort);
  Network network = measured(std::move(all.events), std::move(all.wires));
  kept_.offer(network);
  return network;
}

PlacedEvents NetworkSearch::search_block(std::size_t block, const Effort& effort) const {
  NetworkTask task = task_;
  task.in_order = false;
  // In place, so that an open end is never longer than a closed one; and on a device the next block
  // needs its qubits where they were.
  if (!blocks_.is_last(block) && (!task.closes() || task.device != nullptr)) {
    task.outputs = Outputs::in_place;
  }
  std::vector<int> parities = blocks_.parities_of(block);
  if (blocks_.are_all() && !task_.in_order) {
    std::ranges::sort(parities);
    return search_parity_network(blocks_.strings_of(block, parities).frame, task, effort);
  }
  const Rotations strings = blocks_.strings_of(block, parities);
  NetworkSearch search(strings, task, effort);
  search.search();
  Network network = search.kept_.answer();
  for (NetworkEvent& event : network.events) {
    if (event.row >= 0) event.row = parities[static_cast<std::size_t>(event.row)];
  }
  return {std::move(network.events), std::move(network.wires)};
}

/// The gates of the best network up to a random one.
std::vector<Gate> NetworkSearch::random_prefix() {
  std::vector<Gate> prefix;
  const int cut = rng_.below(kept_.best().open + 1);
  for (const NetworkEvent& event : kept_.best().events) {
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
  options.in_order = task_.in_order;
  options.graph = task_.device;
  options.alike = task_.in_order ? 0 : 0.8F;
  options.runs = 8 << std::min(cycle, 3);
  for (int run = 0; run < from_start + from_gates && !meter_.ended(); ++run) {
    const std::vector<Gate> prefix = run < from_start ? std::vector<Gate>() : random_prefix();
    const RotationList& rows = list(plans_.draw(rng_));
    options.stretch = 30 + rng_.below(50);
    options.known = task_.in_order ? kept_.best().count : 0;  // in any order it does not help
    const std::uint64_t before = meter_.steps();
    const auto gates = run_relay(rows, options, prefix, plans_, rng_, meter_);
    if (!gates) return;
    NetworkProblem problem(rows, task_.in_order, plans_.first()[0].settings, task_.device, rng_);
    kept_.offer(finished(problem, prefix, *gates, before));
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
  NetworkProblem problem(list(plan), task_.in_order, plan.settings, task_.device, rng_);
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
    kept_.offer(std::move(network));
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

/// Longer with every cycle, each time from the best network; with `by_layers` from the one of
/// fewest layers, to others that have no more.
void NetworkSearch::walk(int cycle, bool by_layers) {
  constexpr std::uint64_t steps_an_event = 8;
  const Network from = by_layers ? kept_.shallow() : kept_.best();
  const std::uint64_t steps = steps_an_event * from.events.size() << std::min(cycle, 6);
  NetworkWalk walk(from.events, qubits(), task_.in_order, !task_.closes(), task_.device);
  constexpr Cooling cooling;
  int least = by_layers ? from.depth : from.count;
  for (std::uint64_t k = 0; k < steps; ++k) {
    const float uphill = cooling.at(static_cast<double>(k) / static_cast<double>(steps));
    const bool changed = by_layers ? walk.step(uphill, rng_, least) : walk.step(uphill, rng_);
    if (const int now = by_layers ? walk.depth() : walk.count(); changed && now < least) {
      least = now;
      kept_.offer(measured(walk.events(), from.wires));
    }
    if (!meter_.step()) return;  // with more effort the walk would have ended elsewhere
  }
  kept_.offer(measured(walk.events(), from.wires));
}

/// With its tail, for which so many steps are taken, and the qubits where they are to stand.
Network NetworkSearch::closed(const std::vector<NetworkEvent>& events, const LabelFrame& frame,
                              std::uint64_t steps) {
  std::vector<int> wires(static_cast<std::size_t>(qubits()));
  std::iota(wires.begin(), wires.end(), 0);
  if (!task_.closes()) return measured(events, std::move(wires));
  Effort effort;
  effort.control = meter_.control();
  effort.steps = steps;
  const bool in_place = task_.in_place();
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
  if (task_.device == nullptr) {
    consider(close_tail(frame, Outputs::anywhere, nullptr, rng_.next(), effort));
  }
  if (in_place || task_.device != nullptr) {
    const Outputs outputs = in_place ? Outputs::in_place : Outputs::anywhere;
    consider(close_tail(frame, outputs, task_.device, rng_.next(), effort));
  }
  if (task_.device != nullptr) consider(undo(events, qubits()));
  return std::move(*best);
}

Network NetworkSearch::measured(std::vector<NetworkEvent> events, std::vector<int> wires) const {
  Network network{std::move(events), std::move(wires), 0, 0, 0};
  while (!task_.closes() && !network.events.empty() && network.events.back().row < 0) {
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

NetworkResult NetworkSearch::result() const {
  const Network& network = kept_.answer();
  const int n = qubits();
  NetworkResult result{{}, network.wires, network.count, network.depth};
  PauliFrame images = identity_images(n);
  result.gates = circuit_of(network.events, rotations_, images);
  if (task_.closes()) {
    // What is left to undo is on single wires.
    for (structures::Gate& gate : eliminate_clifford(std::move(images), false).gates) {
      result.gates.push_back(std::move(gate));
    }
  }
  return result;
}

}  // namespace

NetworkResult search_network(const Rotations& rotations, const NetworkTask& task,
                             const Effort& effort) {
  if (task.device != nullptr) require_connected(*task.device, rotations.frame.qubits());
  NetworkSearch search(rotations, task, effort);
  if (!search.is_closed_anyhow()) return search.run();
  // Searched as closed as well, for as many steps: an open end is never longer than a closed one.
  Effort half = effort;
  const auto now = Control::Clock::now();
  if (half.control.deadline) half.control.deadline = now + (*half.control.deadline - now) / 2;
  NetworkSearch open_search(rotations, task, half);
  NetworkResult open = open_search.run();
  if (open_search.is_proven()) return open;
  NetworkTask closed_task = task;
  closed_task.outputs = Outputs::in_place;
  Effort rest = effort;
  rest.on_bound = nullptr;  // what closed networks take, open ones might not
  NetworkResult closed = NetworkSearch(rotations, closed_task, rest).run();
  const auto size = [&](const NetworkResult& result) {
    return task.by_depth() ? std::pair(result.depth, result.count)
                           : std::pair(result.count, result.depth);
  };
  return size(closed) < size(open) ? closed : open;
}

}  // namespace zelt::braidwerk::internal
