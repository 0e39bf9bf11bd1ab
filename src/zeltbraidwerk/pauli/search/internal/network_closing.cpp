#include "zeltbraidwerk/pauli/search/internal/network_closing.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include "zeltbraidwerk/clifford/search/internal/search.h"
#include "zeltbraidwerk/pauli/search/internal/ladders.h"
#include "zeltbraidwerk/pauli/search/internal/network_circuit.h"
#include "zeltbraidwerk/pauli/search/internal/tuning.h"
#include "zeltbraidwerk/search/internal/incumbent.h"
#include "zeltbraidwerk/search/internal/orders.h"
#include "zeltbraidwerk/search/internal/wire_frame.h"

namespace zelt::braidwerk::internal {
namespace {

/// Gates after a network after which every label stands for a label: qubit q on wire wires[q].
struct Tail {
  std::vector<Gate> gates;
  std::vector<int> wires;
};

/// Turns what the labels stand for into what they are to be, by a Clifford search.
Tail searched_tail(const LabelFrame& frame, const NetworkTask& network, Outputs outputs,
                   std::uint64_t seed, const Effort& effort) {
  Task task;
  task.outputs = outputs;
  task.device = network.device;
  task.seed = seed;
  PauliFrame images = frame.preimages();
  if (network.target != nullptr) {
    for (const structures::Gate& gate : network.target->gates) images.apply(gate);
  }
  CliffordCircuit undone = search_clifford(images, task, effort);
  return {labelled(to_gates(undone.gates), frame.qubits()), std::move(undone.wires)};
}

/// Undoes the gates of a network by the same gates backward.
Tail backward(const std::vector<NetworkEvent>& events, int qubits) {
  Tail tail{{}, in_order(qubits)};
  for (auto event = events.rbegin(); event != events.rend(); ++event) {
    if (event->row < 0) tail.gates.push_back(event->gate);
  }
  return tail;
}

/// Swaps that it takes to bring every qubit back to its own wire.
int swaps_of(const std::vector<int>& wires) {
  std::vector<bool> seen(wires.size());
  int swaps = 0;
  for (std::size_t q = 0; q < wires.size(); ++q) {
    for (std::size_t w = q; !seen[w]; w = static_cast<std::size_t>(wires[w])) {
      seen[w] = true;
      if (static_cast<std::size_t>(wires[w]) != q) ++swaps;
    }
  }
  return swaps;
}

bool share_a_cycle(const std::vector<int>& wires, int a, int b) {
  for (int q = wires[static_cast<std::size_t>(a)]; q != a; q = wires[static_cast<std::size_t>(q)]) {
    if (q == b) return true;
  }
  return false;
}

/// Where the labels of the wires stand after swaps and gates on one wire.
class Renaming {
 public:
  explicit Renaming(int qubits) : now_(qubits) {}
  Gate operator()(const Gate& gate) const { return {now_[gate.a], now_[gate.b]}; }

  /// Exchanges two ends, two others, and with them the products of both.
  void exchange(const Gate& ends, const Gate& others) {
    const auto third = [](End one, End other) { return static_cast<End>(one ^ label_of(other)); };
    WireFrame frame = now_.inverse();
    std::swap(frame[ends.a], frame[ends.b]);
    std::swap(frame[others.a], frame[others.b]);
    std::swap(frame[third(ends.a, others.a)], frame[third(ends.b, others.b)]);
    now_ = frame.inverse();
  }

 private:
  WireFrame now_;  // the end on which each end is found
};

/// Both ends' labels play the parts of Z on one wire and X on the other; the swap that follows
/// exchanges the ends as a swap of qubits does between these bases.
std::vector<NetworkEvent> with_swaps(const std::vector<NetworkEvent>& events,
                                     std::vector<int> wires, float chance, Rng& rng) {
  Renaming renamed(static_cast<int>(wires.size()));
  std::vector<NetworkEvent> result;
  int left = swaps_of(wires);
  const auto swap_wires = [&](int a, int b) {
    for (int& wire : wires) wire = wire == a ? b : wire == b ? a : wire;
    --left;
  };
  for (const NetworkEvent& event : events) {
    const Gate gate = renamed(event.gate);
    const int a = wire_of(gate.a);
    const int b = wire_of(gate.b);
    if (left == 0 || event.row >= 0 || !share_a_cycle(wires, a, b) || !rng.chance(chance)) {
      result.push_back({gate, event.row});
      continue;
    }
    // As Z and X in bases that both wires have of their own, X on the one and Z on the other.
    const End x_of_a = end_of(a, another(label_of(gate.a)));
    const End z_of_b = end_of(b, another(label_of(gate.b)));
    result.push_back({{x_of_a, z_of_b}, -1});
    result.push_back({gate, -1});
    renamed.exchange({gate.a, z_of_b}, {x_of_a, gate.b});
    swap_wires(a, b);
  }
  for (std::size_t q = 0; q < wires.size(); ++q) {
    while (wires[q] != static_cast<int>(q)) {
      const int a = static_cast<int>(q);
      const int b = wires[q];
      const Gate one = cnot(a, b);
      const Gate other = cnot(b, a);
      for (const Gate& gate : {one, other, one}) result.push_back({gate, -1});
      swap_wires(a, b);
    }
  }
  return result;
}

/// Brings every qubit back to its own wire. A swap after a gate on the same wires costs one gate
/// more, as both together are two gates, and what comes later has its wires renamed; three where
/// there is no such gate. The best of some random ways.
std::vector<NetworkEvent> in_place(const std::vector<NetworkEvent>& events,
                                   const std::vector<int>& wires, Rng& rng) {
  Smallest<std::vector<NetworkEvent>> best(Objective::count);
  for (int way = 0; way < network_tuning.swap_ways; ++way) {
    const float chance = way == 0 ? 1 : rng.unit();
    std::vector<NetworkEvent> found = with_swaps(events, wires, chance, rng);
    const CircuitSize size{gates_of(found), depth_of(found, static_cast<int>(wires.size()))};
    best.offer(std::move(found), size);
  }
  return best.circuit();
}

Network with_tail(std::vector<NetworkEvent> events, const Tail& tail, bool is_in_place, Rng& rng) {
  for (const Gate& gate : tail.gates) events.push_back({gate, -1});
  cancel_pairs(events);
  if (!is_in_place || swaps_of(tail.wires) == 0) {
    return network_of(std::move(events), tail.wires, true);
  }
  return network_of(in_place(events, tail.wires, rng),
                    in_order(static_cast<int>(tail.wires.size())), true);
}

}  // namespace

Network closed(const std::vector<NetworkEvent>& events, const LabelFrame& frame,
               const NetworkTask& task, const Control& control, std::uint64_t steps, Rng& rng) {
  if (!task.closes()) return network_of(events, in_order(frame.qubits()), false);
  Effort effort;
  effort.control = control;
  effort.steps = steps;
  std::optional<Network> best;
  const auto consider = [&](const Tail& tail) {
    Network network = with_tail(events, tail, task.in_place(), rng);
    if (!best || network.size.count < best->size.count) best = std::move(network);
  };
  const bool may_go_back = task.device != nullptr && task.target == nullptr;
  try {
    const StopScope in_time(control, may_go_back);
    if (task.device == nullptr) {
      consider(searched_tail(frame, task, Outputs::anywhere, rng.next(), effort));
    }
    if (task.in_place() || task.device != nullptr) {
      const Outputs outputs = task.in_place() ? Outputs::in_place : Outputs::anywhere;
      consider(searched_tail(frame, task, outputs, rng.next(), effort));
    }
  } catch (const Stopped&) {
    if (!best && !may_go_back) throw;
  }
  if (may_go_back) consider(backward(events, frame.qubits()));
  return std::move(*best);
}

}  // namespace zelt::braidwerk::internal
