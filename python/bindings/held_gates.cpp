#include "held_gates.h"

#include <nanobind/stl/tuple.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "convert.h"
#include "module.h"
#include "operations.h"
#include "synthesize.h"
#include "unlocked.h"

namespace zelt::braidwerk::python {

using nb::literals::operator""_a;
using structures::Gate;
using structures::Parameter;

namespace {

constexpr std::size_t per_look = 1 << 12;  // for Ctrl-C
constexpr const char* written_signature =
    "def written(self) -> tuple[list[tuple[str, tuple[int, ...], list[float | Parameter]]], "
    "list[int]]";

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

/// Into a gate that may hold another one.
void read_into(Gate& made, nb::handle source, const Fields& fields) {
  made.name = text(field(source, fields.name));
  made.diag = made.name == "RZ" || made.name == "PH";
  const nb::object qubits = field(source, fields.qubits);
  made.qbits.clear();
  made.qbits.reserve(nb::len(qubits));
  for (const nb::handle qubit : nb::borrow<nb::tuple>(qubits)) {
    made.qbits.push_back(static_cast<int>(PyLong_AsLong(qubit.ptr())));
  }
  made.params.clear();
  for (const nb::handle each : nb::borrow<nb::tuple>(field(source, fields.params))) {
    made.params.push_back(angle(each, fields));
  }
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

/// Of steps and Clifford gates.
template <class Compact>
std::tuple<std::size_t, IntArray2> sizes_of_compact(const std::vector<Compact>& gates) {
  GateList pairs;
  for (const Compact& gate : gates) {
    if (gate.is_pair()) pairs.emplace_back(gate.a, gate.b);
  }
  const std::size_t others = gates.size() - pairs.size();
  return {others, to_numpy(pairs)};
}

bool has_symbols(const HeldSteps& held) {
  return !std::ranges::all_of(held.circuit.angles, &internal::LinearAngle::is_number);
}

/// Of Gates of the package, which are known to be valid and are none that are made of others: calls
/// take with a gate that the next one changes.
template <class Take>
void read_gates(nb::handle operations, Take&& take) {
  const Fields fields;
  Gate gate;
  std::size_t count = 0;
  for (const nb::handle each : operations) {
    if (++count % per_look == 0 && signal_raised()) nb::raise_python_error();
    read_into(gate, each, fields);
    take(gate);
  }
  if (PyErr_Occurred() != nullptr) nb::raise_python_error();
}

HeldGates held_gates(nb::handle operations) {
  HeldGates held;
  held.gates.reserve(nb::len(operations));
  read_gates(operations, [&](const Gate& gate) { held.gates.push_back(gate); });
  return held;
}

HeldSteps held_steps(int n, nb::handle operations) {
  internal::StepReader reader(n);
  try {
    read_gates(operations, [&](const Gate& gate) { reader.read(gate); });
  } catch (const std::invalid_argument& error) {
    raise_error("OptionError", error.what());
  }
  return {reader.take()};
}

}  // namespace

void bind_held_gates(nb::module_& m) {
  nb::class_<HeldGates>(m, "_HeldGates")
      .def(
          "__init__",
          [](HeldGates* self, nb::handle operations) {
            new (self) HeldGates(held_gates(operations));
          },
          "operations"_a)
      .def("written", &written, nb::sig(written_signature))
      .def("width", &width_of)
      .def("sizes", &sizes_of);
  nb::class_<HeldSteps>(m, "_HeldSteps")
      .def(
          "__init__",
          [](HeldSteps* self, int n, nb::handle operations) {
            new (self) HeldSteps(held_steps(n, operations));
          },
          "n"_a, "operations"_a)
      .def(
          "written",
          [](const HeldSteps& held) { return written({internal::written(held.circuit)}); },
          nb::sig(written_signature))
      .def("width", [](const HeldSteps&) { return 2; })
      .def("sizes", [](const HeldSteps& held) { return sizes_of_compact(held.circuit.steps); })
      .def("has_symbols", &has_symbols);
  nb::class_<HeldCliffords>(m, "_HeldCliffords")
      .def("rows", [](const HeldCliffords& held) { return to_operations(held.gates); })
      .def("sizes", [](const HeldCliffords& held) { return sizes_of_compact(held.gates); });
}

}  // namespace zelt::braidwerk::python
