#include <benchmark/benchmark.h>

#include <numeric>
#include <vector>

#include "speed/inputs.h"
#include "speed/memory.h"
#include "zeltbraidwerk/graphs/steiner_gauss.h"
#include "zeltbraidwerk/phase/gray_synth.h"
#include "zeltbraidwerk/phase/gray_synth_on_graph.h"

// Device graphs, matrices on a device, phase polynomials. Devices are square grids, numbered along
// a snake, so that 0, 1, 2, ... is a Hamiltonian path.

namespace {

using structures::Gate;
using structures::Graph;
using structures::Table;

Graph grid(int side) {
  Graph g(side * side);
  const auto vertex = [&](int x, int y) { return y * side + (y % 2 == 0 ? x : side - 1 - x); };
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      if (x > 0) g.add_edge(vertex(x - 1, y), vertex(x, y));
      if (y > 0) g.add_edge(vertex(x, y - 1), vertex(x, y));
    }
  }
  return g;
}

/// Different parities, none of them zero.
PhasePolynomial random_polynomial(int n, std::size_t terms) {
  std::mt19937 engine(static_cast<unsigned>(8000 + n));
  PhasePolynomial poly;
  while (poly.size() < terms) {
    BoolRow parity(static_cast<std::size_t>(n));
    for (std::size_t q = 0; q < parity.size(); ++q) parity[q] = (engine() & 1) != 0;
    if (parity != BoolRow(parity.size())) poly[parity] = 0.1;
  }
  return poly;
}

void count(benchmark::State& state, const std::vector<Gate>& circuit) {
  double cnots = 0;
  for (const Gate& gate : circuit) cnots += gate.name == "CNOT" ? 1 : 0;
  state.counters["CNOTs"] = cnots;
}

/// `peak` is what one call holds at most, `table` the path table alone.
void shortest_paths(benchmark::State& state) {
  const Graph device = grid(static_cast<int>(state.range(0)));
  double table = 0;
  for (auto _ : state) {
    Graph g = device;
    g.set_shortest_paths();
    table = 0;
    for (const auto& row : g.shortest_paths) {
      table += sizeof(row);
      for (const auto& path : row) table += static_cast<double>(sizeof(path) + 4 * path.size());
    }
  }
  Graph g = device;
  state.counters["peak"] = static_cast<double>(bench::peak_of([&] { g.set_shortest_paths(); }));
  state.counters["table"] = table;
}

void steiner_gauss(benchmark::State& state) {
  Graph device = grid(static_cast<int>(state.range(0)));
  std::vector<int> path(static_cast<std::size_t>(device.n));
  std::iota(path.begin(), path.end(), 0);
  Table table(device.n);
  table.bits.clear();
  for (const BoolRow& row : bench::random_invertible(device.n)) {
    table.bits.insert(table.bits.end(), row.begin(), row.end());
  }
  std::vector<Gate> circuit;
  for (auto _ : state) circuit = synthesis::steiner_gauss_ham_path(table, device, path);
  count(state, circuit);
}

void gray(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const PhasePolynomial poly = random_polynomial(n, static_cast<std::size_t>(state.range(1)));
  Table map;
  std::vector<Gate> circuit;
  for (auto _ : state) circuit = gray_synth(poly, map);
  count(state, circuit);
}

void gray_on_grid(benchmark::State& state) {
  Graph device = grid(static_cast<int>(state.range(0)));
  const PhasePolynomial poly =
      random_polynomial(device.n, static_cast<std::size_t>(state.range(1)));
  Table map;
  std::vector<Gate> circuit;
  for (auto _ : state) circuit = gray_synth_on_graph(poly, device, map);
  count(state, circuit);
}

BENCHMARK(shortest_paths)->Arg(4)->Arg(20)->Unit(benchmark::kMillisecond);
BENCHMARK(steiner_gauss)->Arg(4)->Arg(10)->Unit(benchmark::kMillisecond);
BENCHMARK(gray)
    ->Args({8, 64})
    ->Args({16, 160})
    ->Args({20, 200})
    ->Args({100, 10000})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(gray_on_grid)
    ->Args({3, 30})
    ->Args({4, 40})
    ->Args({10, 1000})
    ->Unit(benchmark::kMillisecond);

}  // namespace
