#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <vector>

#include "speed/inputs.h"
#include "speed/memory.h"
#include "zeltbraidwerk/linear/internal/greedy.h"

// Greedy searches, one start on one random matrix, seeded, of at most n^2 / 2 operations. Beside
// the time: CNOTs, whether they reduced the matrix (from 64 qubits on, a search without lookahead
// may wander), and the heap at its peak in bytes. A search holds the states that it keeps and
// never their children, so the peak grows with width^(depth - 2), not with 2 n^2 children a state.

namespace {

using namespace zelt::braidwerk::internal;

void search(benchmark::State& state, GreedyCost cost) {
  const int n = static_cast<int>(state.range(0));
  const BitMatrix m = BitMatrix::pack(bench::random_invertible(n), n, n);
  GreedyOptions options;
  options.cost = cost;
  options.beam = {static_cast<int>(state.range(1)), static_cast<int>(state.range(2))};
  Control control;
  control.max_operations = n * n / 2;

  GreedyResult result;
  const auto run = [&] {
    SeededDraw draw(1, 0);
    std::vector<int> permutation(static_cast<std::size_t>(n));
    result = greedy_synthesis(m, permutation, options, std::ref(draw), control);
  };
  for (auto _ : state) run();
  state.counters["reduced"] = result.reduced;
  state.counters["CNOTs"] = static_cast<double>(result.circuit.gates.size());
  result = GreedyResult();
  state.counters["peak"] =
      benchmark::Counter(static_cast<double>(bench::peak_of(run)), benchmark::Counter::kDefaults,
                         benchmark::Counter::kIs1024);
}

void ones(benchmark::State& state) {
  search(state, GreedyCost::Ones);
}
void ones_with_inverse(benchmark::State& state) {
  search(state, GreedyCost::OnesWithInverse);
}
void log_cost(benchmark::State& state) {
  search(state, GreedyCost::Log);
}

// Qubits, width, depth.
BENCHMARK(ones)
    ->Args({32, 1, 1})
    ->Args({64, 1, 1})
    ->Args({128, 1, 1})
    ->Args({32, 4, 2})
    ->Args({32, 4, 3})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(ones_with_inverse)
    ->Args({32, 1, 1})
    ->Args({64, 1, 1})
    ->Args({128, 1, 1})
    ->Args({32, 4, 2})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(log_cost)->Args({16, 1, 1})->Args({32, 1, 1})->Unit(benchmark::kMillisecond);

}  // namespace
