#include <nanobind/stl/optional.h>
#include <nanobind/stl/pair.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "convert.h"
#include "module.h"
#include "operations.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/graphs/graph.h"
#include "zeltbraidwerk/pauli/internal/colouring.h"
#include "zeltbraidwerk/pauli/internal/diagonaliser.h"
#include "zeltbraidwerk/pauli/internal/graph_form.h"

/// \file
/// Groups of commuting Pauli strings, and the gates that make them diagonal.
namespace zelt::braidwerk::python {

using internal::PauliFrame;
using nb::literals::operator""_a;
using structures::Gate;
using structures::Graph;

namespace {

using Strings = std::vector<std::vector<unsigned char>>;

std::optional<Graph> with_paths(std::optional<Graph> graph) {
  if (graph) graph->set_shortest_paths();
  return graph;
}

std::optional<std::pair<int, int>> first_clash(const PauliFrame& frame) {
  std::vector<internal::Word> plane(static_cast<std::size_t>(frame.words()));
  for (int r = 0; r < frame.rows(); ++r) {
    frame.anticommuting_rows(frame, r, plane.data());
    int other = -1;
    internal::for_each_bit(plane.data(), frame.words(), [&](int s) {
      if (other < 0) other = s;
    });
    if (other >= 0) return std::pair(r, other);
  }
  return std::nullopt;
}

}  // namespace

void bind_pauli_groups(nb::module_& m) {
  m.def("_gate_names", [] {
    std::vector<std::string> names;
    for (int k = 0; gate_name(k) != nullptr; ++k) names.emplace_back(gate_name(k));
    return names;
  });
  m.def(
      "_codiagonalised",
      [](const Letters& letters, int method, std::optional<Graph> graph, std::uint64_t seed) {
        const Strings strings = to_strings(letters);
        const int qubits = static_cast<int>(letters.shape(1));
        std::optional<Graph> device = with_paths(std::move(graph));
        PauliFrame frame = PauliFrame::pack(strings, qubits);
        const std::vector<Gate> gates = unlocked([&] {
          int failures = 0;
          return device ? internal::diagonalise(frame, &*device)
                        : internal::change_basis(frame, method, failures,
                                                 internal::SeededDraw(seed, 0));
        });
        Strings rewritten = strings;
        frame.unpack_into(rewritten);
        std::vector<bool> negative;
        for (int r = 0; r < frame.rows(); ++r) negative.push_back(frame.is_negative(r));
        return std::tuple(to_operations(gates), to_numpy(rewritten, qubits), negative);
      },
      "letters"_a, "method"_a, "graph"_a.none(), "seed"_a);
  m.def(
      "_commuting_groups",
      [](const Letters& letters) {
        const Strings strings = to_strings(letters);
        const int qubits = static_cast<int>(letters.shape(1));
        return unlocked(
            [&] { return internal::commuting_groups(PauliFrame::pack(strings, qubits)); });
      },
      "letters"_a);
  m.def(
      "_first_clash",
      [](const Letters& letters) {
        const PauliFrame frame = to_frame(letters);
        return unlocked([&] { return first_clash(frame); });
      },
      "letters"_a, "The first pair of strings that do not commute, or None.");
}

}  // namespace zelt::braidwerk::python
