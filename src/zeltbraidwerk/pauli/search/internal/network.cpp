#include "zeltbraidwerk/pauli/search/internal/network.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "zeltbraidwerk/search/internal/circuit_size.h"

namespace zelt::braidwerk::internal {

Network network_of(std::vector<NetworkEvent> events, std::vector<int> wires, bool closes) {
  Network network{std::move(events), std::move(wires), 0, {}};
  while (!closes && !network.events.empty() && network.events.back().row < 0) {
    network.events.pop_back();
  }
  for (const NetworkEvent& event : network.events) {
    if (event.row < 0) {
      ++network.size.count;
    } else {
      network.open = network.size.count;
    }
  }
  network.size.depth = depth_of(network.events, static_cast<int>(network.wires.size()));
  return network;
}

int gates_of(const std::vector<NetworkEvent>& events) {
  return static_cast<int>(
      std::ranges::count_if(events, [](const NetworkEvent& event) { return event.row < 0; }));
}

int depth_of(const std::vector<NetworkEvent>& events, int qubits) {
  LayerCount layers(qubits);
  for (const NetworkEvent& event : events) {
    if (event.row < 0) layers.add(wire_of(event.gate.a), wire_of(event.gate.b));
  }
  return layers.depth();
}

}  // namespace zelt::braidwerk::internal
