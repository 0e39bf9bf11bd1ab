#include <iostream>

#include <zeltbraidwerk/zeltbraidwerk.h>

int main() {
  // Row r lists the inputs whose XOR stands on qubit r at the output.
  const BoolMatrix wanted = {{1, 0, 1, 0}, {1, 1, 0, 0}, {0, 1, 1, 1}, {1, 1, 1, 1}};

  structures::CnotCircuit circuit = synthesis::optimized_PMH_Algorithm(4, wanted);
  circuit.reverse();  // an elimination builds the inverse; reversed, it builds the map itself

  std::cout << circuit.gates.size() << " CNOTs, depth " << circuit.depth() << '\n';
  for (const auto& [control, target] : circuit.gates) {
    std::cout << "CNOT " << control << ' ' << target << '\n';
  }
  return circuit.Simulate() == wanted ? 0 : 1;
}
