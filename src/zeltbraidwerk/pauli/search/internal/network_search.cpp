#include "zeltbraidwerk/pauli/search/internal/network_search.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <optional>
#include <tuple>

#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/pauli/search/internal/network_circuit.h"
#include "zeltbraidwerk/pauli/search/internal/network_closing.h"
#include "zeltbraidwerk/pauli/search/internal/network_problem.h"
#include "zeltbraidwerk/search/internal/beam.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr NetworkSettings presets_free[] = {
    {.shape = 0.4, .bonus = 0, .emphasis = Emphasis::by_place, .rate = 40},
    {.geometric = false, .shape = 2, .bonus = 0, .emphasis = Emphasis::by_place, .rate = 80},
    {.geometric = false, .shape = 3, .bonus = 0.5},
    {.shape = 0.45, .bonus = 0},
};
constexpr NetworkSettings presets_in_order[] = {
    {.shape = 0.7, .bonus = 1, .emphasis = Emphasis::by_chain, .rate = 0.5},
    {.geometric = false, .shape = 0.7, .emphasis = Emphasis::by_chain, .rate = 0.5},
    {.geometric = false, .shape = 1, .emphasis = Emphasis::by_chain, .rate = 0.4},
    {.geometric = false, .shape = 1, .emphasis = Emphasis::by_predecessors},
};

/// A way to serve all rotations.
struct Network {
  std::vector<NetworkEvent> events;
  std::vector<int> wires;
  int open = 0;  // gates before the tail
  int count = 0;
  int depth = 0;
};

class NetworkSearch {
 public:
  NetworkSearch(const Rotations& rotations, const NetworkOptions& options, const Effort& effort)
      : rotations_(rotations),
        options_(options),
        meter_(effort),
        rng_(options.seed, options.stream) {
    for (int row = 0; row < rotations.frame.rows(); ++row) {
      if (rotations.frame.weight(row) != 0) order_.push_back(row);
    }
  }

  NetworkResult run() {
    run_greedily();
    for (int round = 0; best_->count > 0 && meter_.step(); ++round) run_round(round);
    return result();
  }

 private:
  std::span<const NetworkSettings> presets() const {
    if (options_.in_order) return presets_in_order;
    return presets_free;
  }

  void run_greedily() {
    const RotationList list(rotations_.frame, order_);
    for (const NetworkSettings& settings : presets()) {
      if (best_ && meter_.ended()) return;
      NetworkProblem problem(list, options_.in_order, settings, options_.graph, rng_);
      std::vector<NetworkEvent> events;
      NetworkState state = problem.start(&events);
      problem.finish_greedily(state, events);
      consider(std::move(events), state.frame);
      if (!best_settings_ || best_->open < least_open_) {
        least_open_ = best_->open;
        best_settings_ = &settings;
      }
    }
  }

  void run_round(int round);
  NetworkSettings drawn_settings();
  bool beam_from(NetworkProblem& problem, const std::vector<Gate>& prefix, int width);
  bool consider(std::vector<NetworkEvent> events, const LabelFrame& frame);
  NetworkResult result() const;

  std::tuple<int, int> cost(const Network& network) const {
    return options_.by_depth ? std::tuple(network.depth, network.count)
                             : std::tuple(network.count, network.depth);
  }

  const Rotations& rotations_;
  NetworkOptions options_;
  Meter meter_;
  Rng rng_;
  std::vector<int> order_;  // of the rows that turn anything
  std::optional<Network> best_;
  const NetworkSettings* best_settings_ = nullptr;
  int least_open_ = 0;
};

std::vector<Gate> gates_in(const std::vector<NetworkEvent>& events, int count) {
  std::vector<Gate> gates;
  for (const NetworkEvent& event : events) {
    if (static_cast<int>(gates.size()) == count) break;
    if (event.row < 0) gates.push_back(event.gate);
  }
  return gates;
}

NetworkSettings NetworkSearch::drawn_settings() {
  const auto between = [&](double low, double high) {
    return low + (high - low) * static_cast<double>(rng_.unit());
  };
  NetworkSettings settings;
  settings.geometric = rng_.coin();
  settings.jitter = rng_.coin() ? 0 : between(0, 0.3);
  if (options_.in_order) {
    settings.shape = settings.geometric ? between(0.5, 0.8) : between(0.6, 1.4);
    settings.bonus = settings.geometric ? between(0, 1.2) : between(0, 0.4);
    settings.emphasis = rng_.chance(0.8F) ? Emphasis::by_chain : Emphasis::by_predecessors;
    settings.rate = between(0.35, 0.55);
  } else {
    settings.emphasis = best_settings_->emphasis;
    settings.shape = settings.geometric ? between(0.35, 0.5) : between(1.8, 3.5);
    settings.bonus = between(0, 0.5);
    settings.rate = settings.geometric ? between(25, 45) : between(40, 80);
  }
  return settings;
}

void NetworkSearch::run_round(int round) {
  const int width = std::min(32, 4 << std::min(round / 4, 3));
  const NetworkSettings settings = drawn_settings();
  const RotationList list(rotations_.frame, order_);
  NetworkProblem problem(list, options_.in_order, settings, options_.graph, rng_);
  std::vector<Gate> prefix;
  if (round % 4 != 0) prefix = gates_in(best_->events, rng_.below(best_->open));
  beam_from(problem, prefix, width);
}

bool NetworkSearch::beam_from(NetworkProblem& problem, const std::vector<Gate>& prefix, int width) {
  NetworkState start = problem.start();
  for (const Gate& gate : prefix) problem.play(start, gate);
  BeamOptions options;
  options.width = width;
  options.patience = 30 + rotations_.frame.qubits();
  options.noise = 16;
  BeamSearch<NetworkProblem> beam(problem, options, rng_, meter_);
  bool better = false;
  for (const auto& finished : beam.run(start)) {
    std::vector<NetworkEvent> events;
    NetworkState state = problem.start(&events);
    for (const Gate& gate : prefix) problem.play(state, gate, &events);
    for (const auto& move : finished.moves) problem.play(state, move.gate, &events);
    better |= consider(std::move(events), state.frame);
  }
  return better;
}

/// Closes a network and keeps it where it is no worse than the best.
bool NetworkSearch::consider(std::vector<NetworkEvent> events, const LabelFrame& frame) {
  Network network{std::move(events), {}, 0, 0, 0};
  const int n = rotations_.frame.qubits();
  network.open = network.count = gates_of(network.events);
  network.wires.resize(static_cast<std::size_t>(n));
  std::iota(network.wires.begin(), network.wires.end(), 0);
  if (options_.end != NetworkEnd::open) {
    NetworkTail tail = close_tail(frame);
    for (const Gate& gate : tail.gates) network.events.push_back({gate, -1});
    network.wires = std::move(tail.wires);
    network.count += static_cast<int>(tail.gates.size());
    if (options_.end == NetworkEnd::closed) network.count += swaps_of(network.wires);
  }
  network.depth = depth_of(network.events, n);
  if (best_ && cost(network) > cost(*best_)) return false;
  const bool better = !best_ || cost(network) < cost(*best_);
  best_ = std::move(network);
  if (better) meter_.better(best_->count, best_->depth);
  return better;
}

NetworkResult NetworkSearch::result() const {
  Network network = *best_;
  const int n = rotations_.frame.qubits();
  if (options_.end == NetworkEnd::closed) {
    Rng rng(options_.seed, options_.stream ^ ~std::uint64_t{0});
    take_in_swaps(network.events, network.wires, options_.by_depth, rng);
    std::iota(network.wires.begin(), network.wires.end(), 0);
  }
  NetworkResult result;
  PauliFrame images = identity_images(n);
  result.gates = circuit_of(network.events, rotations_, images);
  result.wires = network.wires;
  result.count = gates_of(network.events);
  result.depth = depth_of(network.events, n);
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
