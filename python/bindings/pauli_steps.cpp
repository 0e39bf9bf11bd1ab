#include <nanobind/operators.h>
#include <nanobind/stl/pair.h>
#include <nanobind/stl/set.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include "convert.h"
#include "module.h"
#include "zeltbraidwerk/pauli/codiag.h"
#include "zeltbraidwerk/pauli/commuting.h"
#include "zeltbraidwerk/pauli/graph_state_codiag.h"
#include "zeltbraidwerk/pauli/greedy_pauli_synth.h"

/// \file
/// The steps of the Pauli syntheses. What a step rewrites comes back, a table with its params, and
/// after them the circuit and what else it appends to.
namespace zelt::braidwerk::python {

using nb::literals::operator""_a;
using structures::Gate;
using structures::Graph;
using structures::Parameter;

namespace {

using Params = std::vector<Parameter>;
using Circuit = std::vector<Gate>;

/// A table and its angles, all rows of one length and all codes from 0 to 3.
struct Rows {
  PauliTable table;
  Params params;
  int qubits = 0;

  Rows(PauliTable given, Params angles) : table(std::move(given)), params(std::move(angles)) {
    if (!table.empty()) qubits = static_cast<int>(table[0].size());
    for (const auto& row : table) {
      check_same(row.size(), table[0].size(), "table: row", "letters");
      for (const unsigned char code : row) {
        if (code > 3) raise_value_error("table: got the code %d, wanted 0 to 3", code);
      }
    }
    check_same(params.size(), table.size(), "params", "angles");
  }
  explicit Rows(PauliTable given) : Rows(given, Params(given.size())) {}

  auto both() { return std::tuple(std::move(table), std::move(params)); }
};

void bind_tables(nb::module_& m) {
  m.def(
      "find_common_pauli",
      [](PauliTable table, int qubit) {
        const Rows rows(std::move(table));
        check_index(qubit, rows.qubits, "qubit");
        return find_common_pauli(rows.table, qubit);
      },
      "table"_a, "qubit"_a);
  m.def(
      "bring_to_z",
      [](PauliTable table, Params params, int qubit, int code) {
        Rows rows(std::move(table), std::move(params));
        check_index(qubit, rows.qubits, "qubit");
        Circuit circuit;
        bring_to_z(rows.table, rows.params, qubit, code, circuit);
        return std::tuple(rows.table, rows.params, std::move(circuit));
      },
      "table"_a, "params"_a, "qubit"_a, "code"_a);
  m.def(
      "apply_cnot",
      [](PauliTable table, Params params, int control, int target) {
        Rows rows(std::move(table), std::move(params));
        check_gates({{control, target}}, rows.qubits);
        Circuit circuit;
        apply_cnot(rows.table, rows.params, control, target, circuit);
        return std::tuple(rows.table, rows.params, std::move(circuit));
      },
      "table"_a, "params"_a, "control"_a, "target"_a);
  m.def(
      "conjugate_table_with_circuit",
      [](Circuit circuit, PauliTable table, Params params) {
        Rows rows(std::move(table), std::move(params));
        check_circuit(circuit, rows.qubits);
        conjugate_table_with_circuit(circuit, rows.table, rows.params);
        return rows.both();
      },
      "circuit"_a, "table"_a, "params"_a);
  const auto sorter = [&m](const char* name, void (*sort)(PauliTable&, Params&)) {
    m.def(
        name,
        [sort](PauliTable table, Params params) {
          Rows rows(std::move(table), std::move(params));
          sort(rows.table, rows.params);
          return rows.both();
        },
        "table"_a, "params"_a);
  };
  sorter("shuffle", shuffle);
  sorter("weight_sort", weight_sort);
  sorter("sort_lexico", sort_lexico);
}

template <class Colouring>
auto coloured(Colouring colour) {
  return [colour](const ArrayLike& value) {
    const BitMatrix bits = to_bits(value, "graph");
    check_same(bits.cols(), bits.rows(), "graph", "columns");
    BoolRow graph;
    for (const BoolRow& row : bits.unpack()) graph.insert(graph.end(), row.begin(), row.end());
    return colour(graph, static_cast<unsigned long>(bits.rows()));
  };
}

template <class Step>
auto codiagonalising(Step step) {
  return [step](PauliTable table, Params params, std::set<int> active) {
    Rows rows(std::move(table), std::move(params));
    check_indices(active, rows.qubits, "active");
    Circuit circuit;
    step(rows.table, rows.params, active, circuit);
    return std::tuple(rows.table, rows.params, std::move(active), std::move(circuit));
  };
}

void bind_codiagonalisation(nb::module_& m) {
  m.def("coloration_lf", coloured(coloration_lf), "graph"_a);
  m.def("coloration_sl", coloured(coloration_sl), "graph"_a);
  const char* doc = "(table, params, active, circuit).";
  m.def("update_single_qubits", codiagonalising(update_single_qubits), "table"_a, "params"_a,
        "active"_a, doc);
  m.def("update_pair_qubits", codiagonalising(update_pair_qubits), "table"_a, "params"_a,
        "active"_a, doc);
  m.def("greedy_diag", codiagonalising(greedy_diag), "table"_a, "params"_a, "active"_a, doc);
  m.def(
      "construct_adjacency_matrix",
      [](PauliTable table) {
        Rows rows(std::move(table));
        auto [graph, gates] = construct_adjacency_matrix(rows.table);
        return std::tuple(to_numpy(graph), std::move(gates));
      },
      "table"_a);
  m.def(
      "build_tables",
      [](PauliTable table) {
        Rows rows(std::move(table));
        const auto [z, x] = build_tables(rows.table);
        return std::tuple(to_numpy(z), to_numpy(x));
      },
      "table"_a);
  m.def(
      "get_table_rank",
      [](const ArrayLike& matrix) { return get_table_rank(to_bits(matrix, "matrix").unpack()); },
      "matrix"_a);
}

void bind_moves(nb::module_& m) {
  nb::class_<Move>(m, "Move", "A basis change on two qubits and a CNOT.")
      .def(nb::init<int, int, unsigned char, unsigned char>(), "control"_a, "target"_a,
           "control_basis"_a, "target_basis"_a)
      .def_ro("control", &Move::control)
      .def_ro("target", &Move::target)
      .def_ro("control_basis", &Move::control_basis)
      .def_ro("target_basis", &Move::target_basis)
      .def(nb::self == nb::self, nb::sig("def __eq__(self, other: object, /) -> bool"));
  m.def(
      "find_best_moves",
      [](PauliTable table, int n) {
        Rows rows(std::move(table));
        if (rows.table.empty()) check_at_most(n, 0, "n");
        check_same(n, rows.qubits, "n");
        std::vector<Move> moves;
        find_best_moves(rows.table, n, moves);
        return moves;
      },
      "table"_a, "n"_a);
}

}  // namespace

void bind_pauli_steps(nb::module_& m) {
  bind_tables(m);
  bind_codiagonalisation(m);
  bind_moves(m);
}

}  // namespace zelt::braidwerk::python
