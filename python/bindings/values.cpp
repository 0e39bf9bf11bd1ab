#include <nanobind/operators.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <sstream>

#include "convert.h"
#include "module.h"
#include "zeltbraidwerk/foundations/cnot_circuit.h"
#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/parameter.h"
#include "zeltbraidwerk/foundations/table.h"

namespace zelt::braidwerk::python {

using namespace structures;
using nb::literals::operator""_a;

namespace {

constexpr int most_qubits = 1 << 24;

template <class T>
std::string streamed(const T& value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

void bind_parameter(nb::module_& m) {
  nb::class_<Parameter>(m, "Parameter", "A rotation angle in radians, numeric or symbolic.")
      .def(nb::init<>())
      .def(nb::init<double>(), "d"_a)
      .def(nb::init<const std::string&>(), "s"_a)
      .def(nb::init<const Parameter&>(), "other"_a, "A copy.")
      .def_static("from_double", &Parameter::from_double, "d"_a)
      .def_static("from_string", &Parameter::from_string, "s"_a)
      .def_rw("is_abstract", &Parameter::is_abstract)
      .def_rw("expression", &Parameter::expression)
      .def_rw("value", &Parameter::value)
      .def("add", nb::overload_cast<double>(&Parameter::add), "d"_a,
           "Adds a number; a numeric sum is wrapped into (-2 pi, 2 pi).")
      .def("add", nb::overload_cast<const std::string&>(&Parameter::add), "s"_a,
           "Adds a symbolic term.")
      .def(
          "__iadd__",
          [](nb::handle_t<Parameter> self, const Parameter& p) {
            nb::cast<Parameter&>(self) += p;
            return nb::borrow(self);
          },
          "p"_a, nb::sig("def __iadd__(self, p: Parameter) -> Parameter"))
      .def("get_numeric_value", &Parameter::get_numeric_value)
      .def("flip_sign", &Parameter::flip_sign, "The negated angle.")
      .def(nb::self == nb::self, nb::sig("def __eq__(self, other: object, /) -> bool"))
      .def("__str__", streamed<Parameter>)
      .def("__repr__", [](const Parameter& p) { return "Parameter(" + streamed(p) + ")"; });
  nb::implicitly_convertible<double, Parameter>();
  nb::implicitly_convertible<std::string, Parameter>();
}

void bind_gate(nb::module_& m) {
  nb::class_<Gate>(m, "Gate", "One named gate on a list of qubits. Nothing is validated.")
      .def(nb::init<>())
      .def(nb::init<const std::string&, const std::vector<int>&>(), "name"_a, "qbits"_a)
      .def(nb::init<const std::string&, const std::vector<int>&, bool>(), "name"_a, "qbits"_a,
           "diag"_a)
      .def(nb::init<const std::string&, const std::vector<int>&, const std::vector<Parameter>&,
                    bool>(),
           "name"_a, "qbits"_a, "params"_a, "diag"_a)
      .def_static("CNOT", &Gate::CNOT, "control"_a, "target"_a)
      .def_static("CZ", &Gate::CZ, "a"_a, "b"_a)
      .def_static("H", &Gate::H, "q"_a)
      .def_static("RXP", &Gate::RXP, "q"_a)
      .def_static("S", &Gate::S, "q"_a)
      .def_rw("name", &Gate::name)
      .def_rw("qbits", &Gate::qbits)
      .def_rw("diag", &Gate::diag)
      .def_rw("params", &Gate::params)
      .def("to_string", &Gate::to_string)
      .def(nb::self == nb::self, nb::sig("def __eq__(self, other: object, /) -> bool"))
      .def("__str__", &Gate::to_string)
      .def("__repr__", [](const Gate& g) { return "<Gate " + g.to_string() + ">"; });
  m.def(
      "cnot_depth",
      [](const std::vector<Gate>& gates) {
        for (const Gate& gate : gates) check_indices(gate.qbits, most_qubits, "qubit");
        return unlocked_alone([&] { return cnot_depth(gates); });
      },
      "gates"_a,
      "CNOT depth of a gate list. Writes the gates and the number of qubits to standard output.");
}

void bind_cnot_circuit(nb::module_& m) {
  nb::class_<CnotCircuit>(m, "CnotCircuit", "A list of CNOTs in time order.")
      .def(nb::init<>(), "One qubit, no gates.")
      .def(
          "__init__",
          [](CnotCircuit* self, int n) {
            check_size(n, "n");
            new (self) CnotCircuit(n);
          },
          "n"_a)
      .def(
          "__init__",
          [](CnotCircuit* self, int n, const ArrayLike& gates) {
            check_size(n, "n");
            new (self) CnotCircuit(n, to_gates(gates, n, "gates"));
          },
          "n"_a, "gates"_a)
      .def_prop_ro("nbqbits", &CnotCircuit::get_number_of_qubits)
      .def_prop_ro(
          "gates", [](const CnotCircuit& c) { return to_numpy(c.gates); }, nb::rv_policy::automatic,
          "The (control, target) pairs as a (k, 2) array of int32.")
      .def("get_number_of_qubits", &CnotCircuit::get_number_of_qubits)
      .def("getGates", &CnotCircuit::getGates, "The (control, target) pairs as a list of tuples.")
      .def(
          "addGate",
          [](CnotCircuit& c, int control, int target) {
            check_gates({{control, target}}, c.nbqbits);
            c.addGate(control, target);
          },
          "control"_a, "target"_a)
      .def(
          "insertGate",
          [](CnotCircuit& c, int control, int target, int position) {
            check_gates({{control, target}}, c.nbqbits);
            check_index(position, static_cast<int>(c.gates.size()) + 1, "position");
            c.insertGate(control, target, position);
          },
          "control"_a, "target"_a, "position"_a)
      .def("reverse", &CnotCircuit::reverse, "Turns the circuit into its inverse, in place.")
      .def(
          "Simulate",
          [](const CnotCircuit& c) {
            check_square(c.nbqbits, "nbqbits", 1.25);
            return to_numpy(unlocked([&] { return c.Simulate(); }));
          },
          "The matrix: row r lists the inputs whose XOR stands on qubit r at the end.")
      .def("to_circuit", &CnotCircuit::to_circuit)
      .def(
          "get_parities",
          [](CnotCircuit& c, int w, std::vector<int> idx) {
            check_index(w, c.nbqbits, "w");
            check_indices(idx, c.nbqbits, "idx");
            // The state, and a row for each of idx and for each gate.
            check_memory((2.0 * c.nbqbits + static_cast<double>(c.gates.size())) * c.nbqbits,
                         "nbqbits", c.nbqbits);
            BoolMatrix h;
            std::vector<int> positions;
            std::vector<int> wires;
            unlocked([&] { c.get_parities(h, c.nbqbits, positions, wires, w, idx); });
            return std::tuple(to_numpy(h), positions, wires);
          },
          "w"_a, "idx"_a, "(H, positions, wires): what wire w holds along the circuit.")
      .def(
          "depth",
          [](const CnotCircuit& c) {
            check_memory(4.0 * c.nbqbits, "nbqbits", c.nbqbits);
            return unlocked([&] { return c.depth(); });
          },
          "Number of layers.")
      .def("__len__", [](const CnotCircuit& c) { return c.gates.size(); })
      .def(nb::self == nb::self, nb::sig("def __eq__(self, other: object, /) -> bool"))
      .def("__str__", streamed<CnotCircuit>)
      .def("__repr__", [](const CnotCircuit& c) {
        return "<CnotCircuit of " + std::to_string(c.gates.size()) + " gates on " +
               std::to_string(c.nbqbits) + " qubits>";
      });
}

Table table_of(const ArrayLike& matrix) {
  const BitMatrix bits = to_bits(matrix, "matrix");
  check_same(bits.cols(), bits.rows(), "matrix", "columns");
  Table table(bits.rows());
  for (int r = 0; r < table.n; ++r) {
    for (int c = 0; c < table.n; ++c) {
      const auto place = static_cast<std::size_t>(r) * static_cast<std::size_t>(table.n) +
                         static_cast<std::size_t>(c);
      table.bits[place] = bits.get(r, c);
    }
  }
  return table;
}

void bind_table(nb::module_& m) {
  nb::class_<Table>(m, "Table", "A square matrix over GF(2) that carries its size.")
      .def(nb::init<>())
      .def(
          "__init__",
          [](Table* self, int n) {
            check_square(n, "n", 0.125);
            new (self) Table(n);
          },
          "n"_a, "The identity.")
      .def_ro("n", &Table::n)
      .def_prop_ro(
          "bits", [](const Table& t) { return to_numpy(t.bits); }, nb::rv_policy::automatic,
          "Row-major, one array.")
      .def_static("from_matrix", table_of, "matrix"_a)
      .def(
          "cnot",
          [](Table& t, int a, int b) {
            check_gates({{a, b}}, t.n);
            t.cnot(a, b);
          },
          "a"_a, "b"_a, "Row a is added to row b.")
      .def(
          "swap_lines",
          [](Table& t, int a, int b) {
            check_gates({{a, b}}, t.n);
            t.swap_lines(a, b);
          },
          "a"_a, "b"_a)
      .def("inverse", [](const Table& t) { return unlocked([&] { return t.inverse(); }); })
      .def("is_identity", &Table::is_identity)
      .def(
          "permute",
          [](const Table& t, const std::vector<int>& perm) {
            check_at_least(static_cast<int>(perm.size()), t.n, "perm: entries");
            check_indices(perm, t.n, "perm");
            return t.permute(perm);
          },
          "perm"_a)
      .def("to_bool_bool", [](const Table& t) { return to_numpy(t.to_bool_bool()); })
      .def("to_string", &Table::to_string, "Nested brackets; differs from str().")
      .def(nb::self == nb::self, nb::sig("def __eq__(self, other: object, /) -> bool"))
      .def("__str__", streamed<Table>)
      .def("__repr__",
           [](const Table& t) { return "<Table of size " + std::to_string(t.n) + ">"; });
}

void bind_update_table(nb::module_& m) {
  m.def(
      "update_table",
      [](const Table& table, const std::vector<Gate>& gates) {
        for (const Gate& gate : gates) {
          if (gate.qbits.size() < 2) raise_value_error("gates: one has fewer than two qubits");
          check_gates({{gate.qbits[0], gate.qbits[1]}}, table.n);
        }
        return unlocked([&] { return update_table(table, gates); });
      },
      "table"_a, "gates"_a, "The table with the gates, read as CNOTs, put at its front.");
}

}  // namespace

void bind_values(nb::module_& m) {
  bind_parameter(m);
  bind_gate(m);
  bind_cnot_circuit(m);
  bind_table(m);
  bind_update_table(m);
}

}  // namespace zelt::braidwerk::python
