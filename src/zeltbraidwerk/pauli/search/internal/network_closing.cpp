#include "zeltbraidwerk/pauli/search/internal/network_closing.h"

#include <algorithm>
#include <numeric>
#include <tuple>

#include "zeltbraidwerk/pauli/search/internal/network_circuit.h"

namespace zelt::braidwerk::internal {
namespace {

bool share_a_cycle(const std::vector<int>& wires, int a, int b) {
  for (int q = wires[static_cast<std::size_t>(a)]; q != a; q = wires[static_cast<std::size_t>(q)]) {
    if (q == b) return true;
  }
  return false;
}

/// A label other than this one.
int another(int label) {
  return label % 3 + 1;
}

/// Where the labels of the wires stand behind swaps and gates on one wire.
class Renaming {
 public:
  explicit Renaming(int qubits) : now_(4 * static_cast<std::size_t>(qubits)) {
    std::iota(now_.begin(), now_.end(), End{0});
  }
  Gate operator()(const Gate& gate) const { return {now_[gate.a], now_[gate.b]}; }

  /// Exchanges two ends, two others, and with them the products of both.
  void exchange(const Gate& ends, const Gate& others) {
    const auto third = [](End one, End other) { return static_cast<End>(one ^ label_of(other)); };
    const End from[] = {ends.a, others.a, third(ends.a, others.a),
                        ends.b, others.b, third(ends.b, others.b)};
    for (End& end : now_) {
      for (std::size_t k = 0; k < 6; ++k) {
        if (end != from[k]) continue;
        end = from[(k + 3) % 6];
        break;
      }
    }
  }

 private:
  std::vector<End> now_;
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

}  // namespace

NetworkTail close_tail(const LabelFrame& frame, Outputs outputs, const BitGraph* graph,
                       std::uint64_t seed, const Effort& effort) {
  Task task;
  task.outputs = outputs;
  task.device = graph;
  task.seed = seed;
  CliffordResult undone = search_clifford(frame.preimages(), task, effort);
  return {labelled(undone.circuit.gates, frame.qubits()), std::move(undone.circuit.wires)};
}

NetworkTail undo(const std::vector<NetworkEvent>& events, int qubits) {
  NetworkTail tail;
  for (auto event = events.rbegin(); event != events.rend(); ++event) {
    if (event->row < 0) tail.gates.push_back(event->gate);
  }
  tail.wires.resize(static_cast<std::size_t>(qubits));
  std::iota(tail.wires.begin(), tail.wires.end(), 0);
  return tail;
}

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

void take_in_swaps(std::vector<NetworkEvent>& events, std::vector<int> wires, Rng& rng) {
  constexpr int ways = 4;
  if (swaps_of(wires) == 0) return;
  const int n = static_cast<int>(wires.size());
  std::vector<NetworkEvent> best;
  std::tuple<int, int> least;
  for (int way = 0; way < ways; ++way) {
    const float chance = way == 0 ? 1 : rng.unit();
    std::vector<NetworkEvent> found = with_swaps(events, wires, chance, rng);
    const int count = gates_of(found);
    const int depth = depth_of(found, n);
    const std::tuple cost(count, depth);
    if (way > 0 && cost >= least) continue;
    best = std::move(found);
    least = cost;
  }
  events = std::move(best);
}

}  // namespace zelt::braidwerk::internal
