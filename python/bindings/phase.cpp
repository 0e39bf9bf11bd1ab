#include <nanobind/stl/pair.h>
#include <nanobind/stl/set.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <algorithm>

#include "convert.h"
#include "module.h"
#include "zeltbraidwerk/graphs/graph.h"
#include "zeltbraidwerk/phase/gray_synth.h"
#include "zeltbraidwerk/phase/gray_synth_on_graph.h"

namespace zelt::braidwerk::python {

using nb::literals::operator""_a;
using structures::Gate;
using structures::Graph;
using structures::Parameter;
using structures::Table;

namespace {

using Dict = nb::typed<nb::dict, nb::typed<nb::tuple, bool, nb::ellipsis>, Parameter>;

/// A polynomial whose keys are n long; n below 0: as long as the first one.
PhasePolynomial to_polynomial(const Dict& poly, int n) {
  PhasePolynomial terms;
  for (const auto& [key, angle] : static_cast<const nb::dict&>(poly)) {
    const int size = static_cast<int>(nb::len(key));
    if (n < 0) n = size;
    check_same(size, n, "poly: key", "bits");
    BoolRow parity = to_bool_row({nb::borrow(key)}, n, "poly");
    if (std::ranges::find(parity, true) == parity.end()) {
      raise_value_error("poly: holds the zero parity, which is a global phase");
    }
    terms[std::move(parity)] = to_value<Parameter>(angle, "poly", "angles as values");
  }
  return terms;
}

/// The parity table and the columns of a step function, all within each other.
struct Step {
  BoolMatrix table;
  int rows;
  int cols;

  explicit Step(const ArrayLike& value) {
    const BitMatrix bits = to_bits(value, "table");
    table = bits.unpack();
    rows = bits.rows();
    cols = bits.cols();
  }

  template <class Columns>
  void check_cols(const Columns& columns) const {
    check_indices(columns, cols, "cols");
  }
  void check_rows(const std::set<int>& set) const { check_indices(set, rows, "rows"); }
  void check_params(const std::vector<Parameter>& params) const {
    if (std::cmp_less(params.size(), cols)) {
      raise_value_error("params: got %zu, wanted %d", params.size(), cols);
    }
  }
};

void bind_syntheses(nb::module_& m) {
  m.def(
      "gray_synth",
      [](const Dict& poly) {
        const PhasePolynomial terms = to_polynomial(poly, -1);
        Table table(0);
        auto circuit = unlocked([&] { return gray_synth(terms, table); });
        return std::tuple(std::move(circuit), std::move(table));
      },
      "poly"_a,
      "(circuit, table) of a dict from parities, tuples of bits, to angles; table is the linear "
      "map of the circuit.");
  m.def(
      "gray_synth_on_graph",
      [](const Dict& poly, Graph graph) {
        const PhasePolynomial terms = to_polynomial(poly, graph.n);
        if (!graph.is_connected() && graph.n > 0) raise_value_error("graph: is not connected");
        Table table(0);
        auto circuit = unlocked([&] { return gray_synth_on_graph(terms, graph, table); });
        return std::tuple(std::move(circuit), std::move(table));
      },
      "poly"_a, "graph"_a, "The same with every CNOT on an edge of the graph.");
  m.def(
      "phase_poly_to_table",
      [](const Dict& poly, int n) {
        check_size(n, "n");
        check_at_most(n, 1 << 24, "n");
        const PhasePolynomial terms = to_polynomial(poly, n);
        BoolMatrix table;
        std::vector<Parameter> params;
        phase_poly_to_table(terms, table, params, n);
        return std::tuple(to_numpy(table), std::move(params));
      },
      "poly"_a, "n"_a,
      "(table, params): one row per qubit, one column per term in the order of the keys.");
}

void bind_splits(nb::module_& m) {
  m.def(
      "count_bits_restricted",
      [](const ArrayLike& table, int row, const std::set<int>& cols, bool value) {
        const Step step(table);
        check_index(row, step.rows, "row");
        step.check_cols(cols);
        return count_bits_restricted(step.table, row, cols, value);
      },
      "table"_a, "row"_a, "cols"_a, "value"_a, "How many of the columns hold the value.");
  m.def(
      "split_cols_on_row",
      [](std::set<int> cols0, std::set<int> cols1, const ArrayLike& table, int row) {
        const Step step(table);
        check_index(row, step.rows, "row");
        step.check_cols(cols0);
        split_cols_on_row(cols0, cols1, step.table, row);
        return std::tuple(std::move(cols0), std::move(cols1));
      },
      "cols0"_a, "cols1"_a, "table"_a, "row"_a,
      "(cols0, cols1) with the columns that hold a 1 moved to cols1.");
  m.def(
      "do_split",
      [](int row, const std::vector<int>& cols, const ArrayLike& table) {
        const Step step(table);
        check_index(row, step.rows, "row");
        step.check_cols(cols);
        return do_split(row, cols, step.table);
      },
      "row"_a, "cols"_a, "table"_a, "(zeros, ones) of the columns, in their order.");
  m.def(
      "find_best_split",
      [](const std::vector<int>& cols, const std::set<int>& rows, const ArrayLike& table) {
        const Step step(table);
        step.check_rows(rows);
        step.check_cols(cols);
        return find_best_split(cols, rows, step.table);
      },
      "cols"_a, "rows"_a, "table"_a, "The row that splits the columns most unevenly, or -1.");
}

void bind_steps(nb::module_& m) {
  m.def(
      "place_cnot",
      [](int control, int target, std::vector<Gate> circuit, const ArrayLike& table) {
        Step step(table);
        check_index(control, step.rows, "control");
        check_index(target, step.rows, "target");
        place_cnot(control, target, circuit, step.table);
        return std::tuple(std::move(circuit), to_numpy(step.table));
      },
      "control"_a, "target"_a, "circuit"_a, "table"_a,
      "(circuit, table) with the CNOT appended and the table in the new wires.");
  m.def(
      "reduce_cols",
      [](std::set<int> cols, std::vector<Gate> circuit, const ArrayLike& table,
         std::vector<Parameter> params) {
        Step step(table);
        step.check_cols(cols);
        step.check_params(params);
        reduce_cols(cols, circuit, step.table, params);
        return std::tuple(std::move(cols), std::move(circuit));
      },
      "cols"_a, "circuit"_a, "table"_a, "params"_a,
      "(cols, circuit) with a PH gate for each column on a single wire.");
}

using Stepped = std::tuple<std::set<int>, std::vector<Gate>, BoolArray2>;

void bind_graph_steps(nb::module_& m) {
  m.def(
      "base_recursion_step_graph",
      [](std::set<int> cols, std::set<int> rows, const Graph& graph, std::vector<Gate> circuit,
         const ArrayLike& table, std::vector<Parameter> params) -> Stepped {
        Step step(table);
        check_same(step.rows, graph.n, "table", "rows");
        step.check_cols(cols);
        step.check_rows(rows);
        step.check_params(params);
        unlocked(
            [&] { base_recursion_step_graph(cols, rows, graph, circuit, step.table, params); });
        return {std::move(cols), std::move(circuit), to_numpy(step.table)};
      },
      "cols"_a, "rows"_a, "graph"_a, "circuit"_a, "table"_a, "params"_a,
      "(cols, circuit, table) when the columns within the rows are served.");
  m.def(
      "ones_recursion_step_graph",
      [](std::set<int> cols, std::set<int> rows, int target, const Graph& graph,
         std::vector<Gate> circuit, const ArrayLike& table,
         std::vector<Parameter> params) -> Stepped {
        Step step(table);
        check_same(step.rows, graph.n, "table", "rows");
        step.check_cols(cols);
        step.check_rows(rows);
        step.check_params(params);
        check_index(target, graph.n, "target");
        unlocked([&] {
          ones_recursion_step_graph(cols, rows, target, graph, circuit, step.table, params);
        });
        return {std::move(cols), std::move(circuit), to_numpy(step.table)};
      },
      "cols"_a, "rows"_a, "target"_a, "graph"_a, "circuit"_a, "table"_a, "params"_a,
      "The same for columns with a 1 on the target.");
}

}  // namespace

void bind_phase(nb::module_& m) {
  bind_syntheses(m);
  bind_splits(m);
  bind_steps(m);
  bind_graph_steps(m);
}

}  // namespace zelt::braidwerk::python
