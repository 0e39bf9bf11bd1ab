#include <benchmark/benchmark.h>

#include <algorithm>

#include "support/rotations.h"
#include "zeltbraidwerk/clifford/clifford_circuit.h"
#include "zeltbraidwerk/pauli/commute_pauli_synth.h"
#include "zeltbraidwerk/pauli/greedy_pauli_synth.h"
#include "zeltbraidwerk/pauli/pauli_synth.h"

// The UCCSD ansatz by qubits and electrons, and the Clifford operator that is left after it.

namespace {

using Circuit = std::vector<structures::Gate>;
using Synthesis = Circuit (*)(PauliRotationMap&, structures::OperatorTableau&);

double pairs(const Circuit& circuit) {
  return static_cast<double>(std::count_if(
      circuit.begin(), circuit.end(), [](const auto& gate) { return gate.qbits.size() == 2; }));
}

template <Synthesis synthesis>
void uccsd(benchmark::State& state) {
  const int qubits = static_cast<int>(state.range(0));
  auto rotations = support::uccsd(qubits, static_cast<int>(state.range(1)));
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
  auto rotations = support::uccsd(qubits, static_cast<int>(state.range(1)));
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
