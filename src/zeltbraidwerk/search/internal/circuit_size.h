#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "zeltbraidwerk/foundations/cnot_circuit.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/internal/clifford_gate.h"
#include "zeltbraidwerk/search/internal/task.h"

namespace zelt::braidwerk::internal {

inline bool is_better(const CircuitSize& a, const CircuitSize& b, Objective objective) {
  return a.key(objective) < b.key(objective);
}

inline CircuitSize size_of(const structures::CnotCircuit& circuit) {
  return {static_cast<int>(circuit.gates.size()), circuit.depth()};
}

/// Counts layers of gates on two wires, each put into the first layer that is free on its wires.
class LayerCount {
 public:
  explicit LayerCount(int wires) : levels_(static_cast<std::size_t>(wires)) {}

  /// Returns the layer of this one, from 1.
  int add(int wire_a, int wire_b) {
    int& a = levels_[static_cast<std::size_t>(wire_a)];
    int& b = levels_[static_cast<std::size_t>(wire_b)];
    a = b = std::max(a, b) + 1;
    depth_ = std::max(depth_, a);
    return a;
  }
  int depth() const { return depth_; }

 private:
  std::vector<int> levels_;
  int depth_ = 0;
};

/// Of the gates on two qubits.
/// @{
inline CircuitSize size_of(const std::vector<structures::Gate>& gates, int qubits) {
  int count = 0;
  LayerCount layers(qubits);
  for (const structures::Gate& gate : gates) {
    if (gate.qbits.size() != 2) continue;
    layers.add(gate.qbits[0], gate.qbits[1]);
    ++count;
  }
  return {count, layers.depth()};
}
inline CircuitSize size_of(const std::vector<CliffordGate>& gates, int qubits) {
  int count = 0;
  LayerCount layers(qubits);
  for (const CliffordGate& gate : gates) {
    if (!gate.is_pair()) continue;
    layers.add(gate.a, gate.b);
    ++count;
  }
  return {count, layers.depth()};
}
/// @}

}  // namespace zelt::braidwerk::internal
