// A ladder of CNOTs back and forth, made shorter.
#include <iostream>

#include <zeltbraidwerk/zeltbraidwerk.h>

int main() {
  const BoolMatrix wanted = {{1, 1, 1, 1}, {0, 1, 1, 1}, {0, 0, 1, 1}, {0, 0, 0, 1}};
  const auto result = synthesis::synthesize_linear(wanted);
  std::cout << result.count << " CNOTs, depth " << result.depth << '\n';
  for (const structures::Gate& gate : result.circuit.to_circuit()) std::cout << gate << '\n';
  return result.circuit.Simulate() == wanted ? 0 : 1;
}
