#pragma once

#include <algorithm>
#include <vector>

#include "zeltbraidwerk/foundations/cnot_circuit.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/search/internal/task.h"

namespace zelt::braidwerk::internal {

inline bool is_better(const CircuitSize& a, const CircuitSize& b, Objective objective) {
  return a.key(objective) < b.key(objective);
}

inline CircuitSize size_of(const structures::CnotCircuit& circuit) {
  return {static_cast<int>(circuit.gates.size()), circuit.depth()};
}

/// Of the gates on two qubits.
inline CircuitSize size_of(const std::vector<structures::Gate>& gates, int qubits) {
  CircuitSize size;
  std::vector<int> levels(static_cast<std::size_t>(qubits));
  for (const structures::Gate& gate : gates) {
    if (gate.qbits.size() != 2) continue;
    int& a = levels[static_cast<std::size_t>(gate.qbits[0])];
    int& b = levels[static_cast<std::size_t>(gate.qbits[1])];
    a = b = std::max(a, b) + 1;
    size.depth = std::max(size.depth, a);
    ++size.count;
  }
  return size;
}

}  // namespace zelt::braidwerk::internal
