#include <nanobind/stl/optional.h>
#include <nanobind/stl/pair.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <iostream>
#include <limits>
#include <optional>
#include <utility>

#include "convert.h"
#include "held_gates.h"
#include "module.h"
#include "synthesize.h"
#include "zeltbraidwerk/routing/internal/rotation_rows.h"
#include "zeltbraidwerk/routing/internal/route.h"
#include "zeltbraidwerk/routing/ion_nnizer.h"
#include "zeltbraidwerk/routing/linear_nnizer.h"

/// \file
/// What a function of the library rewrites comes back after its result. A circuit goes in with the
/// tableau to start from, of as many qubits.
namespace zelt::braidwerk::python {

using nb::literals::operator""_a;
using structures::Gate;
using structures::Graph;
using structures::OperatorTableau;
using structures::Parameter;
using synthesis::RotationSequence;

namespace {

using Circuit = std::vector<Gate>;
using Routed = std::tuple<Circuit, OperatorTableau>;
using HeldRouted = std::tuple<HeldGates, OperatorTableau>;

void check_strings(const RotationSequence& rotations, int qubits) {
  for (const auto& [string, angle] : rotations) {
    if (std::cmp_not_equal(string.size(), qubits)) {
      raise_value_error("rotations: got a string of %zu letters, wanted %d", string.size(), qubits);
    }
  }
}

/// A search calls itself for each rotation that it looks ahead.
void check_depth(int depth) {
  check_size(depth, "depth");
  check_at_most(depth, 1000, "depth");
}

void check_device(const Circuit& circuit, const Graph& graph, const OperatorTableau& frame,
                  int depth) {
  check_circuit(circuit, frame.nbqbits);
  check_same(graph.n, frame.nbqbits, "graph");
  check_tableau(frame, graph.n, "frame");
  check_depth(depth);
}

/// Runs f with standard output swallowed.
template <class F>
void silently(F&& f) {
  unlocked_alone([&] {
    struct Restore {
      std::streambuf* kept = std::cout.rdbuf(nullptr);
      ~Restore() {
        std::cout.rdbuf(kept);
        std::cout.clear();
      }
    };
    const Restore restore;
    f();
  });
}

void bind_normal_form(nb::module_& m) {
  m.def(
      "is_clifford",
      [](const Gate& gate) {
        check_gate(gate, std::numeric_limits<int>::max());
        return synthesis::is_clifford(gate);
      },
      "gate"_a);
  m.def("is_clifford_angle", &synthesis::is_clifford_angle, "angle"_a);
  m.def(
      "get_basis_change",
      [](const std::string& pauli, int n) {
        check_size(n, "n");
        check_at_least(static_cast<int>(pauli.size()), n, "pauli: letters");
        return synthesis::get_basis_change(pauli, n);
      },
      "pauli"_a, "n"_a);
  m.def(
      "merge_rotations",
      [](const RotationSequence& rotations) {
        if (!rotations.empty()) {
          check_strings(rotations, static_cast<int>(rotations[0].first.size()));
        }
        return unlocked([&] { return synthesis::merge_rotations(rotations); });
      },
      "rotations"_a);
  m.def(
      "renormalize",
      [](RotationSequence rotations, OperatorTableau tableau) {
        check_tableau(tableau, tableau.nbqbits, "tableau");
        check_strings(rotations, tableau.nbqbits);
        const bool folded = unlocked([&] { return synthesis::renormalize(rotations, tableau); });
        return std::tuple(folded, std::move(rotations), std::move(tableau));
      },
      "rotations"_a, "tableau"_a, "(whether any was folded, rotations, tableau).");
  m.def(
      "normalize_circuit",
      [](const Circuit& circuit, OperatorTableau tableau, bool commuting_blocks, bool merge) {
        check_tableau(tableau, tableau.nbqbits, "tableau");
        check_circuit(circuit, tableau.nbqbits);
        return unlocked([&] {
          return synthesis::normalize_circuit(circuit, tableau, commuting_blocks, merge);
        });
      },
      "circuit"_a, "tableau"_a, "commuting_blocks"_a, "merge"_a, "(blocks, tableau).");
  m.def(
      "_normal_form",
      [](const HeldGates& given, int n, bool merge) {
        check_circuit(given.gates, n);
        return interruptible(std::nullopt, n, [&](const internal::Control&) {
          internal::NormalForm form =
              internal::normal_form(given.gates, OperatorTableau(n), true, merge, true);
          return std::optional(std::pair(form.blocks(), std::move(form.clifford)));
        });
      },
      "circuit"_a, "n"_a, "merge"_a, "(blocks, tableau); symbolic sums keep all digits.");
}

void bind_routings(nb::module_& m) {
  m.def(
      "clifford_nnize",
      [](const Circuit& circuit, Graph graph, int depth, bool commuting_blocks, bool merge,
         OperatorTableau frame, int sketch_mode) -> Routed {
        check_device(circuit, graph, frame, depth);
        graph.set_shortest_paths();
        Circuit out;
        unlocked([&] {
          synthesis::clifford_nnize(circuit, graph, depth, commuting_blocks, merge, out, frame,
                                    sketch_mode);
        });
        return {std::move(out), std::move(frame)};
      },
      "circuit"_a, "graph"_a, "depth"_a, "commuting_blocks"_a, "merge"_a, "frame"_a,
      "sketch_mode"_a, "(out, frame).");
  m.def(
      "clifford_nnize_depth",
      [](const Circuit& circuit, Graph graph, int depth, bool commuting_blocks, bool merge,
         OperatorTableau frame, int sketch_mode) -> Routed {
        check_device(circuit, graph, frame, depth);
        graph.set_shortest_paths();
        Circuit out;
        silently([&] {
          synthesis::clifford_nnize_depth(circuit, graph, depth, commuting_blocks, merge, out,
                                          frame, sketch_mode);
        });
        return {std::move(out), std::move(frame)};
      },
      "circuit"_a, "graph"_a, "depth"_a, "commuting_blocks"_a, "merge"_a, "frame"_a,
      "sketch_mode"_a, "(out, frame); what the library would write to standard output is dropped.");
  m.def(
      "clifford_nnize_ion",
      [](const Circuit& circuit, int depth, bool commuting_blocks, bool merge,
         OperatorTableau frame) -> Routed {
        check_tableau(frame, frame.nbqbits, "frame");
        check_circuit(circuit, frame.nbqbits);
        check_depth(depth);
        Circuit out;
        unlocked([&] {
          synthesis::clifford_nnize_ion(circuit, depth, commuting_blocks, merge, out, frame);
        });
        return {std::move(out), std::move(frame)};
      },
      "circuit"_a, "depth"_a, "commuting_blocks"_a, "merge"_a, "frame"_a, "(out, frame).");
  m.def(
      "clifford_nnize_ion_shelving",
      [](const Circuit& circuit, int depth, bool commuting_blocks, bool merge, double pair_error,
         double shelve_error, OperatorTableau frame) -> Routed {
        check_tableau(frame, frame.nbqbits, "frame");
        check_circuit(circuit, frame.nbqbits);
        check_depth(depth);
        Circuit out;
        unlocked([&] {
          synthesis::clifford_nnize_ion_shelving(circuit, depth, commuting_blocks, merge,
                                                 pair_error, shelve_error, out, frame);
        });
        return {std::move(out), std::move(frame)};
      },
      "circuit"_a, "depth"_a, "commuting_blocks"_a, "merge"_a, "pair_error"_a, "shelve_error"_a,
      "frame"_a, "(out, frame).");
}

/// For routing.route and routing.route_ions: (gates, frame). Raises UnfinishedError at the end of
/// the budget, and KeyboardInterrupt.
void bind_interruptible(nb::module_& m) {
  using Metric = std::optional<std::pair<double, double>>;
  m.def(
      "_routed",
      [](const HeldGates& given, Graph graph, int depth, bool by_depth,
         std::optional<double> budget) -> HeldRouted {
        check_device(given.gates, graph, OperatorTableau(graph.n), depth);
        return interruptible(
            budget, graph.n, [&](const internal::Control& control) -> std::optional<HeldRouted> {
              graph.set_shortest_paths();
              internal::RoutingOptions options;
              options.depth = depth;
              options.linear_sums = true;
              options.objective =
                  by_depth ? internal::FanInCost::depth : internal::FanInCost::cnots;
              options.control = control;
              HeldRouted made(HeldGates{}, OperatorTableau(graph.n));
              auto& [out, frame] = made;
              if (!internal::route(given.gates, graph, options, out.gates, frame))
                return std::nullopt;
              return made;
            });
      },
      "circuit"_a, "graph"_a, "depth"_a, "by_depth"_a, "budget"_a.none());
  m.def(
      "_routed_for_ions",
      [](const HeldGates& given, int n, int depth, const Metric& errors,
         std::optional<double> budget) -> HeldRouted {
        check_circuit(given.gates, n);
        check_depth(depth);
        return interruptible(
            budget, n, [&](const internal::Control& control) -> std::optional<HeldRouted> {
              internal::RoutingOptions options;
              options.depth = depth;
              options.linear_sums = true;
              options.control = control;
              HeldRouted made(HeldGates{}, OperatorTableau(n));
              auto& [out, frame] = made;
              const bool finished =
                  errors
                      ? internal::route_ions(
                            given.gates, structures::ShelveMetric(n, errors->first, errors->second),
                            options, out.gates, frame)
                      : internal::route_ions(given.gates, structures::DefaultMetric{}, options,
                                             out.gates, frame);
              return finished ? std::optional(std::move(made)) : std::nullopt;
            });
      },
      "circuit"_a, "n"_a, "depth"_a, "errors"_a.none(), "budget"_a.none());
}

}  // namespace

void bind_routing(nb::module_& m) {
  bind_normal_form(m);
  bind_routings(m);
  bind_interruptible(m);
}

}  // namespace zelt::braidwerk::python
