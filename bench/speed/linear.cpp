#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "speed/inputs.h"
#include "speed/memory.h"
#include "zeltbraidwerk/linear/synthesis.h"

// Synthesis of one random matrix. Beside the time, each row gives the CNOTs found and, in bytes,
// the heap at its peak, the packed matrix and the gate list that is handed back.

namespace {

using structures::CnotCircuit;

template <typename Synthesis>
void run(benchmark::State& state, Synthesis synthesis) {
  const int n = static_cast<int>(state.range(0));
  const BoolMatrix m = bench::random_invertible(n);
  CnotCircuit circuit;
  for (auto _ : state) benchmark::DoNotOptimize(circuit = synthesis(n, m));
  const double count = static_cast<double>(circuit.gates.size());
  circuit = CnotCircuit();
  const std::size_t peak = bench::peak_of([&] { circuit = synthesis(n, m); });
  const auto bytes = [](double size) {
    return benchmark::Counter(size, benchmark::Counter::kDefaults, benchmark::Counter::kIs1024);
  };
  state.counters["CNOTs"] = count;
  state.counters["peak"] = bytes(static_cast<double>(peak));
  state.counters["matrix"] = bytes(std::ceil(n / 64.0) * 8 * n);
  state.counters["gates"] = bytes(count * sizeof(circuit.gates[0]));
}

void gauss(benchmark::State& state) {
  run(state, synthesis::GaussianElimination);
}

void pmh(benchmark::State& state) {
  run(state, [](int n, const BoolMatrix& m) { return synthesis::PMH_Algorithm(n, m, 4); });
}

void pmh_every_section(benchmark::State& state) {
  run(state, synthesis::optimized_PMH_Algorithm);
}

void triangular_pairs(benchmark::State& state) {
  run(state, [](int n, BoolMatrix m) { return synthesis::GreedyGaussianElimination_faster(n, m); });
}

void divide_and_conquer(benchmark::State& state) {
  run(state, divide_and_conquer_synthesis);
}

void syndrome(benchmark::State& state) {
  run(state, [](int n, const BoolMatrix& m) {
    std::vector<int> permutation(m.size());
    return synthesis::SyndromeSynthesis(n, m, permutation, 2, 2);
  });
}

BENCHMARK(gauss)->Arg(64)->Arg(256)->Arg(512)->Unit(benchmark::kMicrosecond);
BENCHMARK(pmh)->Arg(64)->Arg(256)->Arg(512)->Unit(benchmark::kMicrosecond);
BENCHMARK(pmh_every_section)->Arg(64)->Arg(256)->Arg(512)->Unit(benchmark::kMicrosecond);
BENCHMARK(triangular_pairs)->Arg(64)->Arg(256)->Unit(benchmark::kMicrosecond);
BENCHMARK(divide_and_conquer)->Arg(32)->Arg(64)->Arg(128)->Unit(benchmark::kMillisecond);
BENCHMARK(syndrome)->Arg(8)->Arg(16)->Arg(32)->Unit(benchmark::kMillisecond);

}  // namespace
