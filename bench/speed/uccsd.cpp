#include <benchmark/benchmark.h>

#include <algorithm>
#include <bit>

#include "support/rotations.h"
#include "zeltbraidwerk/clifford/clifford_circuit.h"
#include "zeltbraidwerk/pauli/commute_pauli_synth.h"
#include "zeltbraidwerk/pauli/greedy_pauli_synth.h"
#include "zeltbraidwerk/pauli/pauli_synth.h"

// The UCCSD ansatz by qubits and electrons, and the Clifford operator that is left after it.

namespace {

using Circuit = std::vector<structures::Gate>;
using Synthesis = Circuit (*)(PauliRotationMap&, structures::OperatorTableau&);

/// The excitations of a closed shell under Jordan-Wigner, spin orbitals interleaved, the lowest
/// filled, all spin-conserving singles and doubles. Each is a product of raising and lowering
/// operators less its adjoint: on their qubits, X and Y with Y an odd number of times, and Z
/// between the first and the second, and between the third and the fourth.
PauliRotationMap ansatz(int qubits, int electrons) {
  support::PauliRows table;
  const auto add = [&](const std::vector<int>& at) {
    for (unsigned ys = 0; ys < 1U << at.size(); ++ys) {
      if (std::popcount(ys) % 2 == 0) continue;
      auto& row = table.emplace_back(static_cast<std::size_t>(qubits));
      for (std::size_t k = 0; k < at.size(); k += 2) {
        for (int q = at[k]; q < at[k + 1]; ++q) row[static_cast<std::size_t>(q)] = 3;
      }
      for (std::size_t k = 0; k < at.size(); ++k) {
        row[static_cast<std::size_t>(at[k])] = ys >> k & 1 ? 2 : 1;
      }
    }
  };
  for (int i = 0; i < electrons; ++i) {
    for (int a = electrons; a < qubits; ++a) {
      if (i % 2 == a % 2) add({i, a});
      for (int j = i + 1; j < electrons; ++j) {
        for (int b = a + 1; b < qubits; ++b) {
          if (i % 2 + j % 2 == a % 2 + b % 2) add({i, j, a, b});
        }
      }
    }
  }
  return support::symbolic(table);
}

double pairs(const Circuit& circuit) {
  return static_cast<double>(std::count_if(
      circuit.begin(), circuit.end(), [](const auto& gate) { return gate.qbits.size() == 2; }));
}

template <Synthesis synthesis>
void uccsd(benchmark::State& state) {
  const int qubits = static_cast<int>(state.range(0));
  auto rotations = ansatz(qubits, static_cast<int>(state.range(1)));
  Circuit circuit;
  for (auto _ : state) {
    structures::OperatorTableau tableau(qubits);
    circuit = synthesis(rotations, tableau);
  }
  state.counters["rotations"] = static_cast<double>(rotations.size());
  state.counters["two-qubit gates"] = pairs(circuit);
}

template <int method>
Circuit in_closed_sets(PauliRotationMap& rotations, structures::OperatorTableau&) {
  return commute_pauli_synth(rotations, method);
}

Circuit in_open_sets(PauliRotationMap& rotations, structures::OperatorTableau& tableau) {
  return commute_pauli_synth_improved(rotations, tableau, 2);
}

void tail(benchmark::State& state) {
  const int qubits = static_cast<int>(state.range(0));
  auto rotations = ansatz(qubits, static_cast<int>(state.range(1)));
  structures::OperatorTableau tableau(qubits);
  greedy_pauli_synth(rotations, tableau);
  Circuit circuit;
  for (auto _ : state) circuit = synthesis::clifford_circuit(tableau);
  state.counters["two-qubit gates"] = pairs(circuit);
}

void molecules(benchmark::internal::Benchmark* bench) {
  bench->Args({12, 4})->Args({14, 10})->Args({16, 10})->Args({20, 14});
  bench->Unit(benchmark::kMillisecond);
}

BENCHMARK(uccsd<pauli_synth>)->Apply(molecules);
BENCHMARK(uccsd<greedy_pauli_synth>)->Apply(molecules);
BENCHMARK(uccsd<greedy_pauli_synth_depth>)->Apply(molecules);
BENCHMARK(uccsd<in_closed_sets<0>>)->Apply(molecules);
BENCHMARK(uccsd<in_closed_sets<2>>)->Apply(molecules);
BENCHMARK(uccsd<in_open_sets>)->Apply(molecules);
BENCHMARK(tail)->Apply(molecules);

}  // namespace
