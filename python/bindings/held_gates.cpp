#include "held_gates.h"

#include <nanobind/stl/tuple.h>

#include <string>
#include <tuple>
#include <utility>

#include "convert.h"
#include "module.h"
#include "unlocked.h"

namespace zelt::braidwerk::python {

using nb::literals::operator""_a;
using structures::Gate;
using structures::Parameter;

namespace {

/// Fields of Gate and Parameter in Python.
struct Fields {
  nb::object name = nb::steal(PyUnicode_InternFromString("_name"));
  nb::object qubits = nb::steal(PyUnicode_InternFromString("_qubits"));
  nb::object params = nb::steal(PyUnicode_InternFromString("_params"));
  nb::object terms = nb::steal(PyUnicode_InternFromString("_terms"));
  nb::object constant = nb::steal(PyUnicode_InternFromString("_constant"));
};

nb::object field(nb::handle source, const nb::object& name) {
  PyObject* value = PyObject_GetAttr(source.ptr(), name.ptr());
  if (value == nullptr) nb::raise_python_error();
  return nb::steal(value);
}

std::string text(const nb::object& source) {
  Py_ssize_t size = 0;
  const char* data = PyUnicode_AsUTF8AndSize(source.ptr(), &size);
  if (data == nullptr) nb::raise_python_error();
  return {data, static_cast<std::size_t>(size)};
}

Parameter angle(nb::handle source, const Fields& fields) {
  if (nb::len(field(source, fields.terms)) > 0)
    return nb::cast<Parameter>(source.attr("to_core")());
  return PyFloat_AsDouble(field(source, fields.constant).ptr());
}

Gate gate(nb::handle source, const Fields& fields) {
  Gate made;
  made.name = text(field(source, fields.name));
  made.diag = made.name == "RZ" || made.name == "PH";
  const nb::object qubits = field(source, fields.qubits);
  made.qbits.reserve(nb::len(qubits));
  for (const nb::handle qubit : nb::borrow<nb::tuple>(qubits)) {
    made.qbits.push_back(static_cast<int>(PyLong_AsLong(qubit.ptr())));
  }
  for (const nb::handle each : nb::borrow<nb::tuple>(field(source, fields.params))) {
    made.params.push_back(angle(each, fields));
  }
  return made;
}

/// Of gates on one and two qubits: how many are on one, and the pairs of those on two.
std::tuple<std::size_t, IntArray2> sizes_of(const HeldGates& held) {
  GateList pairs;
  for (const Gate& each : held.gates) {
    if (each.qbits.size() == 2) pairs.emplace_back(each.qbits[0], each.qbits[1]);
  }
  const std::size_t others = held.gates.size() - pairs.size();
  return {others, to_numpy(pairs)};
}

}  // namespace

HeldGates read_gates(nb::handle operations) {
  constexpr std::size_t per_look = 1 << 12;
  const Fields fields;
  HeldGates held;
  held.gates.reserve(nb::len(operations));
  for (const nb::handle each : operations) {
    if (held.gates.size() % per_look == per_look - 1 && signal_raised()) nb::raise_python_error();
    held.gates.push_back(gate(each, fields));
  }
  if (PyErr_Occurred() != nullptr) nb::raise_python_error();
  return held;
}

void bind_held_gates(nb::module_& m) {
  nb::class_<HeldGates>(m, "_HeldGates")
      .def(
          "__init__",
          [](HeldGates* self, nb::handle operations) {
            new (self) HeldGates(read_gates(operations));
          },
          "operations"_a)
      .def("__len__", [](const HeldGates& held) { return held.gates.size(); })
      .def("gates", [](const HeldGates& held) { return held.gates; })
      .def("sizes", &sizes_of);
}

}  // namespace zelt::braidwerk::python
