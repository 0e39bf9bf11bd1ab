// A chain of Toffoli gates, taken apart into CNOTs and T gates, made shorter.
#include <iostream>
#include <numbers>
#include <utility>
#include <vector>

#include <zeltbraidwerk/zeltbraidwerk.h>

namespace {

using structures::Gate;

Gate rotation(int qubit, double angle) {
  return {"RZ", {qubit}, {angle}, true};
}

/// The usual circuit of six CNOTs and seven rotations by pi/4.
void add_toffoli(std::vector<Gate>& gates, int a, int b, int target) {
  const double t = std::numbers::pi / 4;
  for (const Gate& gate :
       {Gate::H(target), Gate::CNOT(b, target), rotation(target, -t), Gate::CNOT(a, target),
        rotation(target, t), Gate::CNOT(b, target), rotation(target, -t), Gate::CNOT(a, target),
        rotation(b, t), rotation(target, t), Gate::H(target), Gate::CNOT(a, b), rotation(a, t),
        rotation(b, -t), Gate::CNOT(a, b)}) {
    gates.push_back(gate);
  }
}

}  // namespace

int main() {
  // Qubit 6 changes where qubits 0 to 3 are all 1; qubits 4 and 5 hold what is known on the way.
  std::vector<Gate> gates;
  add_toffoli(gates, 0, 1, 4);
  add_toffoli(gates, 2, 4, 5);
  add_toffoli(gates, 3, 5, 6);
  add_toffoli(gates, 2, 4, 5);
  add_toffoli(gates, 0, 1, 4);

  synthesis::OptimizeOptions options;  // as in Python: objective, device, seed, budget, steps, jobs
  options.seed = 1;
  options.steps = 50'000;
  const synthesis::OptimizeResult result = synthesis::optimize_circuit(7, gates, options);

  const auto& [before, after] = std::pair(result.before, result.after);
  std::cout << before.two_qubit << " CNOTs, " << before.t << " T gates before, " << after.two_qubit
            << " and " << after.t << " after\n";
  for (const Gate& gate : result.gates) std::cout << gate << '\n';
  return after.two_qubit <= 18 && after.t <= 23 ? 0 : 1;
}
