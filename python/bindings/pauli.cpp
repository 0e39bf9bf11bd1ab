#include <nanobind/stl/map.h>
#include <nanobind/stl/pair.h>
#include <nanobind/stl/set.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include "convert.h"
#include "module.h"
#include "zeltbraidwerk/clifford/clifford_circuit.h"
#include "zeltbraidwerk/pauli/codiag.h"
#include "zeltbraidwerk/pauli/commute_pauli_synth.h"
#include "zeltbraidwerk/pauli/commuting.h"
#include "zeltbraidwerk/pauli/graph_state_codiag.h"
#include "zeltbraidwerk/pauli/greedy_pauli_synth.h"
#include "zeltbraidwerk/pauli/pauli_synth.h"

/// \file
/// A table is a list of strings, a string a list of codes 0 to 3 for I, X, Y, Z. What a function
/// rewrites comes back after its result.
namespace zelt::braidwerk::python {

using nb::literals::operator""_a;
using structures::Gate;
using structures::Graph;
using structures::OperatorTableau;
using structures::Parameter;

namespace {

using Params = std::vector<Parameter>;
using Dict = nb::typed<nb::dict, nb::typed<nb::tuple, int, nb::ellipsis>, Parameter>;

void check_string(const std::vector<unsigned char>& string, std::size_t letters) {
  check_same(string.size(), letters, "string", "letters");
  for (const unsigned char code : string) {
    if (code > 3) raise_value_error("string: got the code %d, wanted 0 to 3", code);
  }
}

int check_table(const PauliTable& table, const Params& params) {
  for (const auto& row : table) check_string(row, table[0].size());
  check_same(params.size(), table.size(), "params", "angles");
  return table.empty() ? 0 : static_cast<int>(table[0].size());
}

void check_rotations(const PauliRotationMap& rotations, int qubits) {
  for (const auto& [string, angle] : rotations) {
    check_string(string, static_cast<std::size_t>(qubits));
  }
}

PauliRotationMap to_map(const Dict& rotations) {
  PauliRotationMap map;
  for (const auto& [key, angle] : rotations) {
    map[to_value<std::vector<unsigned char>>(key, "rotations", "tuples of codes as keys")] =
        to_value<Parameter>(angle, "rotations", "angles as values");
  }
  if (!map.empty()) check_rotations(map, static_cast<int>(map.begin()->first.size()));
  return map;
}

using WithTableau = std::vector<Gate> (*)(PauliRotationMap&, OperatorTableau&);

template <WithTableau synthesis>
std::tuple<std::vector<Gate>, OperatorTableau> synthesised(const Dict& rotations,
                                                           OperatorTableau tableau) {
  PauliRotationMap map = to_map(rotations);
  check_tableau(tableau, tableau.nbqbits, "tableau");
  check_rotations(map, tableau.nbqbits);
  auto circuit = unlocked([&] { return synthesis(map, tableau); });
  return {std::move(circuit), std::move(tableau)};
}

void bind_syntheses(nb::module_& m) {
  const char* doc =
      "(circuit, tableau) of a dict from tuples of codes to angles; the tableau goes in and comes "
      "out.";
  m.def("pauli_synth", synthesised<pauli_synth>, "rotations"_a, "tableau"_a, doc);
  m.def("greedy_pauli_synth", synthesised<greedy_pauli_synth>, "rotations"_a, "tableau"_a, doc);
  m.def("greedy_pauli_synth_depth", synthesised<greedy_pauli_synth_depth>, "rotations"_a,
        "tableau"_a, doc);
  m.def(
      "commute_pauli_synth",
      [](const Dict& rotations, int method) {
        PauliRotationMap map = to_map(rotations);
        return unlocked([&] { return commute_pauli_synth(map, method); });
      },
      "rotations"_a, "method"_a);
  m.def(
      "commute_pauli_synth_improved",
      [](const Dict& rotations, OperatorTableau tableau, int method) {
        PauliRotationMap map = to_map(rotations);
        check_tableau(tableau, tableau.nbqbits, "tableau");
        check_rotations(map, tableau.nbqbits);
        auto circuit = unlocked([&] { return commute_pauli_synth_improved(map, tableau, method); });
        return std::tuple(std::move(circuit), std::move(tableau));
      },
      "rotations"_a, "tableau"_a, "method"_a, doc);
  m.def(
      "clifford_circuit",
      [](const OperatorTableau& tableau) {
        check_tableau(tableau, tableau.nbqbits, "tableau");
        return unlocked([&] { return synthesis::clifford_circuit(tableau); });
      },
      "tableau"_a, "A circuit that acts as the tableau, signs included.");
}

void bind_codiagonalisation(nb::module_& m) {
  m.def(
      "commute",
      [](const std::vector<unsigned char>& a, const std::vector<unsigned char>& b) {
        check_string(b, a.size());
        return commute(a, b);
      },
      "a"_a, "b"_a);
  m.def(
      "split_commuting",
      [](PauliTable table, Params params) {
        check_table(table, params);
        return unlocked([&] { return split_commuting(table, params); });
      },
      "table"_a, "params"_a, "A pair (table, params) a group of rows that commute.");
  m.def(
      "duncan_co_diag",
      [](PauliTable table, Params params) {
        check_table(table, params);
        auto circuit = unlocked([&] { return duncan_co_diag(table, params); });
        return std::tuple(std::move(circuit), std::move(table), std::move(params));
      },
      "table"_a, "params"_a, "(circuit, table, params) after the circuit.");
  m.def(
      "generate_basis_change_aa",
      [](PauliTable table, Params params, Graph graph) {
        const int qubits = check_table(table, params);
        if (!table.empty()) check_same(graph.n, qubits, "graph");
        graph.set_shortest_paths();
        auto circuit = unlocked([&] { return generate_basis_change_aa(table, params, graph); });
        return std::tuple(std::move(circuit), std::move(table), std::move(params));
      },
      "table"_a, "params"_a, "graph"_a, "The same with every CNOT on an edge of the graph.");
  m.def(
      "graph_state_codiag",
      [](PauliTable table, Params params, int method) {
        check_table(table, params);
        auto circuit = unlocked([&] { return graph_state_codiag(table, params, method); });
        return std::tuple(std::move(circuit), std::move(table), std::move(params));
      },
      "table"_a, "params"_a, "method"_a);
  m.def(
      "generate_basis_change",
      [](PauliTable table, Params params, int method) {
        check_table(table, params);
        int failures = 0;
        auto circuit =
            unlocked([&] { return generate_basis_change(table, params, method, failures); });
        return std::tuple(std::move(circuit), std::move(table), std::move(params), failures);
      },
      "table"_a, "params"_a, "method"_a, "(circuit, table, params, failures).");
}

}  // namespace

void bind_pauli(nb::module_& m) {
  bind_syntheses(m);
  bind_codiagonalisation(m);
}

}  // namespace zelt::braidwerk::python
