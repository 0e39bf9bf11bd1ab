#include "zeltbraidwerk/search/internal/known_circuit.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

#include "zeltbraidwerk/search/internal/options.h"

namespace zelt::braidwerk::internal {

void refuse_start() {
  throw std::invalid_argument("start: got a circuit of another operation, wanted one of this one");
}

void check_known(const synthesis::KnownCircuit& known, int n) {
  std::vector<int> sorted = known.permutation;
  std::ranges::sort(sorted);
  std::vector<int> all(static_cast<std::size_t>(n));
  std::iota(all.begin(), all.end(), 0);
  check_wires("start", n);
  const bool fits = std::ranges::all_of(known.gates, [n](const structures::Gate& gate) {
    const std::vector<int>& qubits = gate.qbits;
    return qubits.size() == (gate.name == "CNOT" ? 2U : 1U) &&
           (qubits.size() == 1 || qubits[0] != qubits[1]) &&
           std::ranges::all_of(qubits, [n](int qubit) { return qubit >= 0 && qubit < n; });
  });
  if (fits && sorted == all) return;
  throw std::invalid_argument("start: got other gates, wanted CNOTs and gates on one qubit, on " +
                              std::to_string(n) + " qubits");
}

GateList cnots_of(const synthesis::KnownCircuit& known) {
  GateList list(static_cast<int>(known.permutation.size()), {});
  for (const structures::Gate& gate : known.gates) {
    if (gate.name == "CNOT") list.gates.push_back(cnot(gate.qbits[0], gate.qbits[1]));
  }
  list.frame = WireFrame(known.permutation);
  return list;
}

}  // namespace zelt::braidwerk::internal
