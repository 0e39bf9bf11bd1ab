#include <nanobind/stl/pair.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include "convert.h"
#include "module.h"
#include "zeltbraidwerk/graph_state/parities.h"
#include "zeltbraidwerk/graph_state/syndrome.h"
#include "zeltbraidwerk/graph_state/synthesis.h"

namespace zelt::braidwerk::python {

using nb::literals::operator""_a;

namespace {

void check_triples(const TripleCircuit& circuit, int n) {
  for (const auto& [code, a, b] : circuit) {
    check_index(code, 3, "code");
    check_index(a, n, "circuit");
    if (code != 0) check_gates({{a, b}}, n);
    if (code != 0 && a == b) raise_value_error("circuit: got qubit %d twice in one gate", a);
  }
}

void check_bound(int n, const BitMatrix& graph) {
  check_size(n, "n");
  check_at_most(n, std::min(graph.rows(), graph.cols()), "n");
}

BitMatrix to_adjacency(const ArrayLike& value) {
  BitMatrix graph = to_bits(value, "graph");
  if (graph.rows() != graph.cols() || graph != graph.transposed()) {
    raise_value_error("graph: not symmetric");
  }
  return graph;
}

void bind_circuits(nb::module_& m) {
  m.def(
      "naive_gs_synthesis",
      [](const ArrayLike& value) {
        const BoolMatrix graph = to_adjacency(value).unpack();
        return unlocked([&] { return naive_gs_synthesis(graph); });
      },
      "graph"_a, "One CZ an edge and one S a one on the diagonal, then H on every qubit.");
  m.def(
      "graph_state_synthesis",
      [](const ArrayLike& value, int n, int tries) {
        const BitMatrix graph = to_adjacency(value);
        check_bound(n, graph);
        check_size(tries, "tries");
        TripleCircuit circuit;
        unlocked([&] { graph_state_synthesis(graph.unpack(), circuit, n, tries); });
        return circuit;
      },
      "graph"_a, "n"_a, "tries"_a,
      "Triples (0, q, 0) for S, (1, a, b) for CZ, (2, control, target) for CNOT, that leave no "
      "one in the leading n by n block.");
  m.def(
      "simulate_circuit",
      [](const ArrayLike& value, const TripleCircuit& circuit, int n) {
        const BitMatrix bits = to_bits(value, "graph");
        check_bound(n, bits);
        check_triples(circuit, n);
        BoolMatrix graph = bits.unpack();
        unlocked([&] { simulate_circuit(graph, circuit, n); });
        return to_numpy(graph);
      },
      "graph"_a, "circuit"_a, "n"_a, "The graph that the circuit leaves.");
  m.def(
      "check_circuit",
      [](const ArrayLike& value, const TripleCircuit& circuit, int n) {
        const BitMatrix bits = to_bits(value, "graph");
        check_bound(n, bits);
        check_triples(circuit, n);
        unlocked([&] { ::check_circuit(bits.unpack(), circuit, n); });
      },
      "graph"_a, "circuit"_a, "n"_a, "Raises RuntimeError unless the circuit solves the graph.");
  m.def(
      "random_graph",
      [](int n) {
        check_square(n, "n", 1.25);
        return to_numpy(unlocked_alone([&] { return random_graph(n); }));
      },
      "n"_a);
}

void bind_decoding(nb::module_& m) {
  m.def(
      "HammingXOR",
      [](const ArrayLike& a, const ArrayLike& b, int n) {
        return HammingXOR(to_bool_row(a, n, "a"), to_bool_row(b, n, "b"), n);
      },
      "a"_a, "b"_a, "n"_a);
  const auto solver = [&m](const char* name, auto solve) {
    m.def(
        name,
        [solve](const ArrayLike& value, const ArrayLike& syndrome, int n, int tries) {
          const BitMatrix vectors = to_bits(value, "vectors");
          check_size(n, "n");
          if (vectors.rows() > 0) check_at_most(n, vectors.cols(), "n");
          const BoolRow wanted = to_bool_row(syndrome, n, "syndrome");
          return unlocked([&] { return solve(vectors.unpack(), wanted, n, tries); });
        },
        "vectors"_a, "syndrome"_a, "n"_a, "tries"_a = 0,
        "Indices of few vectors that sum up to the syndrome.");
  };
  solver("solve_decoding_greedy", [](const BoolMatrix& v, const BoolRow& s, int n, int) {
    return solve_decoding_greedy(v, s, n);
  });
  solver("solve_syndrome", [](const BoolMatrix& v, const BoolRow& s, int n, int tries) {
    return solve_syndrome(v, s, n, tries);
  });
}

}  // namespace

void bind_graph_state(nb::module_& m) {
  bind_circuits(m);
  bind_decoding(m);
}

}  // namespace zelt::braidwerk::python
