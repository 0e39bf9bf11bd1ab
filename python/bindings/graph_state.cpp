#include <nanobind/stl/optional.h>
#include <nanobind/stl/pair.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <algorithm>

#include "convert.h"
#include "module.h"
#include "operations.h"
#include "search.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/graph_state/internal/synthesis.h"
#include "zeltbraidwerk/graph_state/parities.h"
#include "zeltbraidwerk/graph_state/syndrome.h"
#include "zeltbraidwerk/graph_state/synthesis.h"

namespace zelt::braidwerk::python {

using nb::literals::operator""_a;
using internal::Draw;
using internal::PauliFrame;
using structures::Gate;

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
  check_at_least(n, 0, "n");
  check_at_least(graph.rows(), n, "graph: rows");
}

BitMatrix to_adjacency(const ArrayLike& value) {
  BitMatrix graph = to_bits(value, "graph");
  if (graph.rows() != graph.cols() || graph != graph.transposed()) {
    raise_value_error("graph: not symmetric");
  }
  return graph;
}

void bind_doors(nb::module_& m) {
  m.def(
      "naive_gs_synthesis",
      [](const ArrayLike& graph) { return naive_gs_synthesis(to_adjacency(graph).unpack()); },
      "graph"_a, "One CZ an edge and one S a one on the diagonal, then H on every qubit.");
  m.def(
      "graph_state_synthesis",
      [](const ArrayLike& value, int n, int tries) {
        const BitMatrix graph = to_adjacency(value);
        check_bound(n, graph);
        check_at_least(tries, 0, "tries");
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
        simulate_circuit(graph, circuit, n);
        return to_numpy(graph);
      },
      "graph"_a, "circuit"_a, "n"_a, "The graph that the circuit leaves.");
  m.def(
      "check_circuit",
      [](const ArrayLike& value, const TripleCircuit& circuit, int n) {
        const BitMatrix bits = to_bits(value, "graph");
        check_bound(n, bits);
        check_triples(circuit, n);
        check_circuit(bits.unpack(), circuit, n);
      },
      "graph"_a, "circuit"_a, "n"_a, "Raises RuntimeError unless the circuit solves the graph.");
  m.def(
      "random_graph",
      [](int n) {
        check_at_least(n, 0, "n");
        return to_numpy(unlocked_alone([&] { return random_graph(n); }));
      },
      "n"_a);
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
          check_at_least(n, 0, "n");
          check_at_least(vectors.cols(), n, "vectors: columns");
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

/// A circuit that prepares a graph state, from the gates that take the graph apart: backwards,
/// behind H on every qubit. Those leave signs at random; a Z on a qubit turns the sign of its
/// stabiliser, that of X, or Y, there and Z on the neighbours.
std::vector<Gate> preparation(const BitMatrix& graph, const std::vector<Gate>& apart) {
  const int n = graph.rows();
  PauliFrame stabilisers(n, n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      if (graph.get(i, j)) stabilisers.set_letter(i, j, i == j ? 2 : 3);
    }
    if (!graph.get(i, i)) stabilisers.set_letter(i, i, 1);
  }
  for (const Gate& gate : apart) stabilisers.apply(gate);
  std::vector<Gate> gates;
  for (int q = 0; q < n; ++q) gates.push_back(Gate::H(q));
  for (auto gate = apart.rbegin(); gate != apart.rend(); ++gate) {
    gates.push_back(*gate);
    for (auto& angle : gates.back().params) angle = angle.flip_sign();
  }
  for (int i = 0; i < n; ++i) {
    if (stabilisers.is_negative(i)) gates.emplace_back("Z", std::vector{i});
  }
  return gates;
}

std::vector<Gate> as_gates(const TripleCircuit& circuit) {
  std::vector<Gate> gates;
  for (const auto& [code, a, b] : circuit) {
    gates.push_back(code == 0 ? Gate::S(a) : code == 1 ? Gate::CZ(a, b) : Gate::CNOT(a, b));
  }
  return gates;
}

struct Preparation {
  std::vector<Gate> gates;
  TwoQubitCost cost;
};

struct Search {
  const BitMatrix& graph;
  int tries;  // below 0: a CZ an edge
  std::uint64_t seed;
  bool by_depth;
  const internal::Control& control;

  /// Run 0 takes the qubits in their order, later ones in one that they draw.
  std::optional<Preparation> run(int number) const {
    internal::SeededDraw engine(seed, static_cast<std::uint32_t>(number));
    const Draw draw = std::ref(engine);
    const int n = graph.rows();
    std::vector<int> order = shuffled(n, draw);
    if (number == 0) std::ranges::sort(order);
    std::vector<Gate> apart;
    if (tries < 0) {
      apart = naive_gs_synthesis(graph.unpack());
      apart.resize(apart.size() - static_cast<std::size_t>(n));
    } else {
      TripleCircuit circuit;
      internal::synthesise_graph_state(permuted(order), circuit, tries, draw, control);
      apart = as_gates(circuit);
    }
    if (tries >= 0) {
      for (Gate& gate : apart) {
        for (int& q : gate.qbits) q = order[static_cast<std::size_t>(q)];
      }
    }
    Preparation found{preparation(graph, apart), {}};
    found.cost = two_qubit_cost(found.gates, n);
    return found;
  }

  bool operator()(const Preparation& a, const Preparation& b) const {
    return by_depth ? std::pair(a.cost.depth, a.cost.count) < std::pair(b.cost.depth, b.cost.count)
                    : std::pair(a.cost.count, a.cost.depth) < std::pair(b.cost.count, b.cost.depth);
  }

 private:
  BitMatrix permuted(const std::vector<int>& order) const {
    BitMatrix result(graph.rows(), graph.rows());
    for (int i = 0; i < graph.rows(); ++i) {
      for (int j = 0; j < graph.rows(); ++j) {
        result.set(
            i, j,
            graph.get(order[static_cast<std::size_t>(i)], order[static_cast<std::size_t>(j)]));
      }
    }
    return result;
  }
};

}  // namespace

void bind_graph_state(nb::module_& m) {
  bind_doors(m);
  m.def(
      "_best_graph_state",
      [](const ArrayLike& value, int tries, std::uint64_t seed, int first, int last, bool by_depth,
         const SearchControl& control) -> std::optional<std::tuple<int, Operations, int, int>> {
        const BitMatrix graph = to_adjacency(value);
        const internal::Control limits = control.control(graph.rows());
        const Search search{graph, tries, seed, by_depth, limits};
        auto best = unlocked([&] {
          return best_of_runs(
              first, last, limits, [&](int number) { return search.run(number); }, search);
        });
        if (!best) return std::nullopt;
        const auto& [gates, cost] = best->second;
        return std::tuple(best->first, to_operations(gates), cost.count, cost.depth);
      },
      "graph"_a, "tries"_a, "seed"_a, "first"_a, "last"_a, "by_depth"_a, "control"_a);
}

}  // namespace zelt::braidwerk::python
