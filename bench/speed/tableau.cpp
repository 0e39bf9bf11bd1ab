#include <benchmark/benchmark.h>

#include <cstddef>
#include <random>
#include <vector>

#include "stim/circuit/circuit.h"
#include "stim/stabilizers/tableau.h"
#include "stim/stabilizers/tableau_transposed_raii.h"
#include "stim/util_top/circuit_vs_tableau.h"
#include "zeltbraidwerk/foundations/operator_tableau.h"

// A random Clifford circuit of 10^5 gates on 200 qubits becomes a tableau: by left updates here, by
// Stim from the same circuit, and by Stim's fastest gate updates. At most ten times Stim's own
// conversion is what the left updates may take.

namespace {

constexpr std::size_t gate_count = 100000;
constexpr int qubits = 200;

enum class Kind { h, s, cx, cz };
struct Clifford {
  Kind kind;
  int a, b;
};

std::vector<Clifford> random_circuit() {
  std::mt19937 engine(1);
  std::uniform_int_distribution<int> kind(0, 3), first(0, qubits - 1), shift(1, qubits - 1);
  std::vector<Clifford> gates(gate_count);
  for (Clifford& gate : gates) {
    gate.kind = static_cast<Kind>(kind(engine));
    gate.a = first(engine);
    gate.b = (gate.a + shift(engine)) % qubits;
  }
  return gates;
}

void left_updates(benchmark::State& state) {
  const std::vector<Clifford> gates = random_circuit();
  for (auto _ : state) {
    structures::OperatorTableau tableau(qubits);
    for (const auto& [kind, a, b] : gates) {
      switch (kind) {
        case Kind::h:
          tableau.h_left(a);
          break;
        case Kind::s:
          tableau.rz_plus_left(a);
          break;
        case Kind::cx:
          tableau.cnot_left(a, b);
          break;
        case Kind::cz:
          tableau.cz_left(a, b);
          break;
      }
    }
    benchmark::DoNotOptimize(tableau.data.data());
  }
}

void stim_circuit_to_tableau(benchmark::State& state) {
  stim::Circuit circuit;
  for (const auto& [kind, a, b] : random_circuit()) {
    const auto p = static_cast<std::uint32_t>(a);
    const auto q = static_cast<std::uint32_t>(b);
    switch (kind) {
      case Kind::h:
        circuit.safe_append_u("H", {p});
        break;
      case Kind::s:
        circuit.safe_append_u("S", {p});
        break;
      case Kind::cx:
        circuit.safe_append_u("CX", {p, q});
        break;
      case Kind::cz:
        circuit.safe_append_u("CZ", {p, q});
        break;
    }
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(stim::circuit_to_tableau<64>(circuit, false, false, false));
  }
}

void stim_append(benchmark::State& state) {
  const std::vector<Clifford> gates = random_circuit();
  for (auto _ : state) {
    stim::Tableau<64> tableau(qubits);
    {
      stim::TableauTransposedRaii<64> transposed(tableau);
      for (const auto& [kind, a, b] : gates) {
        const auto p = static_cast<std::size_t>(a);
        const auto q = static_cast<std::size_t>(b);
        switch (kind) {
          case Kind::h:
            transposed.append_H_XZ(p);
            break;
          case Kind::s:
            transposed.append_S(p);
            break;
          case Kind::cx:
            transposed.append_ZCX(p, q);
            break;
          case Kind::cz:
            transposed.append_ZCZ(p, q);
            break;
        }
      }
    }
    benchmark::DoNotOptimize(tableau);
  }
}

BENCHMARK(left_updates)->Unit(benchmark::kMillisecond);
BENCHMARK(stim_circuit_to_tableau)->Unit(benchmark::kMillisecond);
BENCHMARK(stim_append)->Unit(benchmark::kMillisecond);

}  // namespace
