#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "zeltbraidwerk/routing/linear_nnizer.h"
#include "zeltbraidwerk/routing/normal_form.h"

#ifdef WITH_STIM
#include "stim/stabilizers/tableau.h"
#include "zeltbraidwerk/routing/stim_nnizer.h"
#endif

// Random circuits of CNOT, H and RZ, taken apart, and routed on square grids: the frame of the
// library beside Stim's tableau, for the same gates.

namespace {

using structures::Gate;

std::vector<Gate> random_circuit(int qubits, int count) {
  std::mt19937 engine(1);
  std::uniform_int_distribution<int> kind(0, 3), first(0, qubits - 1), shift(1, qubits - 1);
  std::vector<Gate> circuit;
  for (int k = 0; k < count; ++k) {
    const int q = first(engine);
    const int other = (q + shift(engine)) % qubits;
    switch (kind(engine)) {
      case 0:
        circuit.emplace_back("RZ", std::vector{q}, std::vector<structures::Parameter>{0.3}, true);
        break;
      case 1:
        circuit.push_back(Gate::H(q));
        break;
      default:
        circuit.push_back(Gate::CNOT(q, other));
    }
  }
  return circuit;
}

structures::Graph grid(int rows, int columns) {
  structures::Graph graph(rows * columns);
  for (int v = 0; v < rows * columns; ++v) {
    if ((v + 1) % columns != 0) graph.add_edge(v, v + 1);
    if (v + columns < rows * columns) graph.add_edge(v, v + columns);
  }
  graph.set_shortest_paths();
  return graph;
}

void normal_form(benchmark::State& state) {
  const std::vector<Gate> circuit = random_circuit(100, static_cast<int>(state.range(0)));
  const bool merge = state.range(1) != 0;
  for (auto _ : state) {
    structures::OperatorTableau tableau(100);
    benchmark::DoNotOptimize(synthesis::normalize_circuit(circuit, tableau, merge, merge));
  }
}

/// Calls route(circuit, graph, depth, out) on ten gates a qubit.
template <typename Route>
void routing(benchmark::State& state, Route&& route) {
  const int rows = static_cast<int>(state.range(0));
  const int columns = static_cast<int>(state.range(1));
  const int qubits = rows * columns;
  const std::vector<Gate> circuit = random_circuit(qubits, 10 * qubits);
  const structures::Graph device = grid(rows, columns);
  std::vector<Gate> out;
  for (auto _ : state) {
    structures::Graph graph = device;
    out.clear();
    route(circuit, graph, static_cast<int>(state.range(2)), out);
  }
  int count = 0;
  for (const Gate& gate : out) count += gate.qbits.size() == 2;
  state.counters["CNOTs"] = count;
}

void own_frame(benchmark::State& state) {
  routing(state, [](const auto& circuit, auto& graph, int depth, auto& out) {
    structures::OperatorTableau frame(graph.n);
    synthesis::clifford_nnize(circuit, graph, depth, true, true, out, frame, 0);
  });
}

// Rows, columns, depth.
void devices(benchmark::internal::Benchmark* b) {
  b->Args({2, 5, 0})->Args({5, 10, 0})->Args({10, 10, 0})->Args({10, 20, 0});
  b->Args({2, 5, 1})->Args({5, 10, 1})->Unit(benchmark::kMillisecond);
}

BENCHMARK(normal_form)
    ->Args({10000, 0})
    ->Args({100000, 0})
    ->Args({100000, 1})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(own_frame)->Apply(devices);

#ifdef WITH_STIM
void stim_frame(benchmark::State& state) {
  routing(state, [](const auto& circuit, auto& graph, int depth, auto& out) {
    synthesis::StimTableau frame(static_cast<std::size_t>(graph.n));
    synthesis::clifford_nnize_stim(circuit, graph, depth, true, true, out, frame, 0);
  });
}
BENCHMARK(stim_frame)->Apply(devices);
#endif

}  // namespace
