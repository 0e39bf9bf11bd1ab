#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/graph_state/internal/synthesis.h"
#include "zeltbraidwerk/pauli/codiag.h"
#include "zeltbraidwerk/pauli/commute_pauli_synth.h"
#include "zeltbraidwerk/pauli/commuting.h"
#include "zeltbraidwerk/pauli/greedy_pauli_synth.h"
#include "zeltbraidwerk/pauli/pauli_synth.h"

// Groups of random Pauli strings, their basis changes, circuits for them, and graph states.

namespace {

using namespace zelt::braidwerk::internal;

PauliTable random_rows(int count, int qubits) {
  std::mt19937 rng(1);
  PauliTable table(static_cast<std::size_t>(count));
  for (auto& row : table) {
    for (int q = 0; q < qubits; ++q) row.push_back(static_cast<unsigned char>(rng() % 4));
  }
  return table;
}

void split(benchmark::State& state) {
  PauliTable table = random_rows(static_cast<int>(state.range(0)), 20);
  std::vector<structures::Parameter> params(table.size());
  std::size_t groups = 0;
  for (auto _ : state) groups = split_commuting(table, params).size();
  state.counters["groups"] = static_cast<double>(groups);
}

/// The table keeps its size, whatever the rows: they need not commute for the time.
void co_diagonalise(benchmark::State& state) {
  const PauliTable rows = random_rows(static_cast<int>(state.range(0)), 20);
  std::vector<structures::Parameter> params(rows.size());
  for (auto _ : state) {
    PauliTable table = rows;
    benchmark::DoNotOptimize(duncan_co_diag(table, params));
  }
}

using Circuit = std::vector<structures::Gate>;

/// On 20 qubits, by the number of rotations.
template <Circuit (*synthesis)(PauliRotationMap&, structures::OperatorTableau&)>
void synthesise(benchmark::State& state) {
  PauliRotationMap rotations;
  for (const auto& row : random_rows(static_cast<int>(state.range(0)), 20)) {
    rotations.emplace(row, structures::Parameter("a"));
  }
  Circuit circuit;
  for (auto _ : state) {
    structures::OperatorTableau tableau(20);
    circuit = synthesis(rotations, tableau);
  }
  const auto pairs = std::count_if(circuit.begin(), circuit.end(),
                                   [](const auto& gate) { return gate.qbits.size() == 2; });
  state.counters["two-qubit gates"] = static_cast<double>(pairs);
}

Circuit in_closed_sets(PauliRotationMap& rotations, structures::OperatorTableau&) {
  return commute_pauli_synth(rotations, 2);
}

void graph_state(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  std::mt19937 rng(1);
  BitMatrix graph(n, n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < i; ++j) {
      const bool edge = rng() & 1;
      graph.set(i, j, edge);
      graph.set(j, i, edge);
    }
  }
  TripleCircuit circuit;
  for (auto _ : state) {
    circuit.clear();
    synthesise_graph_state(graph, circuit, static_cast<int>(state.range(1)), SeededDraw(1, 0), {});
  }
  int pairs = 0;
  for (const auto& [code, a, b] : circuit) pairs += code != 0;
  state.counters["two-qubit gates"] = pairs;
}

BENCHMARK(split)->Arg(1000)->Arg(4620)->Arg(13400)->Unit(benchmark::kMillisecond);
BENCHMARK(co_diagonalise)->Arg(1000)->Arg(13400)->Unit(benchmark::kMillisecond);
BENCHMARK(synthesise<pauli_synth>)
    ->RangeMultiplier(10)
    ->Range(100, 100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(synthesise<greedy_pauli_synth>)
    ->RangeMultiplier(10)
    ->Range(100, 100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(synthesise<greedy_pauli_synth_depth>)
    ->RangeMultiplier(10)
    ->Range(100, 10000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(synthesise<in_closed_sets>)
    ->RangeMultiplier(10)
    ->Range(100, 10000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(graph_state)
    ->Args({20, 100})
    ->Args({30, 100})
    ->Args({50, 100})
    ->Args({50, 0})
    ->Unit(benchmark::kMillisecond);

}  // namespace
