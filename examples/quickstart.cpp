#include <iostream>

#include <zeltbraidwerk/zeltbraidwerk.h>

int main() {
  // Row r lists the inputs whose XOR stands on qubit r at the output.
  const BoolMatrix wanted = {{1, 0, 1, 0}, {1, 1, 0, 0}, {0, 1, 1, 1}, {1, 1, 1, 1}};

  synthesis::LinearOptions options;  // as in Python: method, objective, device, seed, budget, jobs
  options.restarts = 20;
  const synthesis::LinearResult result = synthesis::synthesize_linear(wanted, options);

  std::cout << result.count << " CNOTs, depth " << result.depth << ", by " << result.method << '\n';
  for (const auto& [control, target] : result.circuit.gates) {
    std::cout << "CNOT " << control << ' ' << target << '\n';
  }
  return result.circuit.Simulate() == wanted ? 0 : 1;
}
