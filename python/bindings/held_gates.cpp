#include "held_gates.h"

#include <nanobind/stl/tuple.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "convert.h"
#include "module.h"
#include "unlocked.h"

namespace zelt::braidwerk::python {

using nb::literals::operator""_a;
using structures::Gate;
using structures::Parameter;

namespace {

constexpr std::size_t per_look = 1 << 12;  // for Ctrl-C

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

/// The same bytes for equal gates alone.
std::string key_of(const Gate& gate) {
  std::string key = gate.name + '\0';
  const auto add = [&](const auto& value) {
    key.append(reinterpret_cast<const char*>(&value), sizeof value);
  };
  add(gate.qbits.size());
  for (const int qubit : gate.qbits) add(qubit);
  for (const Parameter& angle : gate.params) {
    key += angle.expression + '\0';
    add(angle.value);
  }
  return key;
}

nb::tuple parts_of(const Gate& gate) {
  nb::list angles;
  for (const Parameter& angle : gate.params) {
    angles.append(angle.is_abstract ? nb::cast(angle) : nb::float_(angle.value));
  }
  return nb::make_tuple(nb::steal(PyUnicode_InternFromString(gate.name.c_str())),
                        nb::tuple(nb::cast(gate.qbits)), std::move(angles));
}

/// Gates that differ, each as its name, its qubits, and its angles (numbers, or Parameters of the
/// core with symbols); and for each gate of the circuit which of them it is.
std::tuple<nb::list, nb::list> written(const HeldGates& held) {
  std::unordered_map<std::string, nb::object> known;
  nb::list parts;
  nb::list places;
  for (const Gate& gate : held.gates) {
    if (nb::len(places) % per_look == per_look - 1 && signal_raised()) nb::raise_python_error();
    nb::object& place = known[key_of(gate)];
    if (!place.is_valid()) {
      place = nb::int_(nb::len(parts));
      parts.append(parts_of(gate));
    }
    places.append(place);
  }
  return {std::move(parts), std::move(places)};
}

/// The most qubits of a gate.
std::size_t width_of(const HeldGates& held) {
  std::size_t most = 0;
  for (const Gate& each : held.gates) most = std::max(most, each.qbits.size());
  return most;
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

/// Of Gates of the package, which are known to be valid and are none that are made of others.
HeldGates read_gates(nb::handle operations) {
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

}  // namespace

void bind_held_gates(nb::module_& m) {
  nb::class_<HeldGates>(m, "_HeldGates")
      .def(
          "__init__",
          [](HeldGates* self, nb::handle operations) {
            new (self) HeldGates(read_gates(operations));
          },
          "operations"_a)
      .def("written", &written,
           nb::sig("def written(self) -> tuple[list[tuple[str, tuple[int, ...], "
                   "list[float | Parameter]]], list[int]]"))
      .def("width", &width_of)
      .def("sizes", &sizes_of);
}

}  // namespace zelt::braidwerk::python
