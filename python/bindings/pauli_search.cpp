#include <nanobind/stl/optional.h>
#include <nanobind/stl/pair.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <tuple>

#include "convert.h"
#include "module.h"
#include "operations.h"
#include "search.h"
#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/clifford/search/internal/search.h"
#include "zeltbraidwerk/pauli/internal/colouring.h"
#include "zeltbraidwerk/pauli/internal/commuting_sets.h"
#include "zeltbraidwerk/pauli/internal/diagonaliser.h"
#include "zeltbraidwerk/pauli/internal/graph_form.h"
#include "zeltbraidwerk/pauli/internal/greedy.h"
#include "zeltbraidwerk/pauli/internal/network.h"
#include "zeltbraidwerk/pauli/internal/recursive.h"

/// \file
/// What pauli.synthesize stands on: every method in one form, run a number of times, the best
/// circuit kept. Run 0 takes the rotations as the library's functions do, in the order of their
/// strings; later ones rename the qubits, or on a device shuffle the rotations.
namespace zelt::braidwerk::python {

using internal::Draw;
using internal::PauliFrame;
using internal::Rotations;
using nb::literals::operator""_a;
using structures::Gate;
using structures::Graph;

namespace {

using Strings = std::vector<std::vector<unsigned char>>;
using Method = std::vector<Gate> (*)(Rotations, Graph*, const Draw&);

std::vector<Gate> recursively(Rotations rotations, Graph*, const Draw&) {
  std::vector<Gate> circuit;
  std::vector<internal::Word> done(static_cast<std::size_t>(rotations.frame.words()));
  internal::RecursiveSynthesis{rotations.frame, rotations.params, circuit, done}.run();
  return circuit;
}

template <int method>
std::vector<Gate> in_sets(Rotations rotations, Graph* graph, const Draw& draw) {
  if (graph != nullptr) {
    return internal::synthesise_open_sets_on_graph(std::move(rotations), *graph);
  }
  return internal::synthesise_open_sets(std::move(rotations), method, draw);
}

constexpr std::pair<std::string_view, Method> methods[] = {
    {"ladder", [](Rotations r, Graph*, const Draw&) { return internal::synthesise_ladders(r); }},
    {"recursive", recursively},
    {"greedy",
     [](Rotations r, Graph*, const Draw&) { return internal::synthesise_greedily(std::move(r)); }},
    {"greedy_depth", [](Rotations r, Graph*,
                        const Draw&) { return internal::synthesise_in_matchings(std::move(r)); }},
    {"sets", in_sets<0>},
    {"sets_graph", in_sets<1>},
    {"sets_decoding", in_sets<2>},
    {"sets_closed",
     [](Rotations r, Graph*, const Draw& draw) { return internal::synthesise_sets(r, 0, draw); }},
};

enum class Tail { returned, closed, closed_freely };

struct Network {
  std::vector<Gate> gates;
  std::vector<int> wires;
  TwoQubitCost cost;
};

constexpr std::uint64_t closing_steps = 10'000;  ///< a few milliseconds, and no large table

struct Search {
  Method method;
  const Strings& strings;
  int qubits;
  bool in_order;
  Tail tail;
  Graph* graph;                     // null: any two qubits may meet
  const internal::BitGraph* edges;  // of the graph
  std::uint64_t seed;
  bool by_depth;

  std::optional<Network> run(int number) const {
    internal::SeededDraw engine(seed, static_cast<std::uint32_t>(number));
    const Draw draw = std::ref(engine);
    std::vector<int> names = shuffled(qubits, draw);
    if (number == 0 || graph != nullptr) std::ranges::sort(names);

    const internal::Synthesis synthesis = [&](Rotations rotations) {
      return method(arranged(std::move(rotations), number, draw), graph, draw);
    };
    Network found;
    found.gates = in_order ? internal::synthesise_in_order(renamed(names), synthesis)
                           : synthesis(renamed(names));
    close(found, number);
    rename_back(found, names);
    found.cost = two_qubit_cost(found.gates, qubits);
    return found;
  }

  bool operator()(const Network& a, const Network& b) const {
    const auto [count, depth] = a.cost;
    const auto [other_count, other_depth] = b.cost;
    return by_depth ? std::tie(depth, count) < std::tie(other_depth, other_count)
                    : std::tie(count, depth) < std::tie(other_count, other_depth);
  }

 private:
  Rotations renamed(const std::vector<int>& names) const {
    Rotations rotations{PauliFrame(qubits, static_cast<int>(strings.size())), {}};
    for (int r = 0; r < rotations.frame.rows(); ++r) {
      const auto& string = strings[static_cast<std::size_t>(r)];
      for (std::size_t q = 0; q < string.size(); ++q) {
        if (string[q] != 0) rotations.frame.set_letter(r, names[q], string[q]);
      }
      rotations.params.push_back(placeholder(r));
    }
    return rotations;
  }

  Rotations arranged(Rotations rotations, int number, const Draw& draw) const {
    const int rows = rotations.frame.rows();
    if (method == methods[0].second) return rotations;
    std::vector<int> order = shuffled(rows, draw);
    if (number == 0 || graph == nullptr) {
      Strings letters;
      for (int r = 0; r < rows; ++r) letters.push_back(rotations.frame.letters(r));
      std::ranges::sort(order, [&](int a, int b) {
        return letters[static_cast<std::size_t>(a)] < letters[static_cast<std::size_t>(b)];
      });
    }
    Rotations result{rotations.frame.select(order), {}};
    for (const int r : order) {
      result.params.push_back(std::move(rotations.params[static_cast<std::size_t>(r)]));
    }
    return result;
  }

  /// Undoes the Clifford gates by a short search for one circuit of them all, or one by one where
  /// that is no longer.
  void close(Network& found, int number) const {
    found.wires.resize(static_cast<std::size_t>(qubits));
    std::iota(found.wires.begin(), found.wires.end(), 0);
    if (tail == Tail::returned || method == methods[0].second) return;
    std::vector<Gate> undoing;
    for (const Gate& gate : found.gates) {
      if (gate.params.empty() || !gate.params[0].is_abstract) undoing.push_back(gate);
    }
    undoing = internal::inverted(undoing);
    PauliFrame images = internal::identity_images(qubits);
    for (const Gate& gate : undoing) images.apply(gate);

    internal::Task task;
    task.objective = by_depth ? internal::Objective::depth : internal::Objective::count;
    task.outputs = tail == Tail::closed ? internal::Outputs::in_place : internal::Outputs::anywhere;
    task.seed = seed;
    task.stream = static_cast<std::uint64_t>(number);
    task.device = edges;
    internal::Effort effort;
    effort.steps = closing_steps;
    auto [closing, shortest, depth] = internal::search_clifford(images, task, effort);
    if (shortest < two_qubit_cost(undoing, qubits).count) {
      undoing = std::move(closing.gates);
      found.wires = std::move(closing.wires);
    }
    found.gates.insert(found.gates.end(), undoing.begin(), undoing.end());
  }

  void rename_back(Network& found, const std::vector<int>& names) const {
    std::vector<int> old(names.size());
    for (std::size_t q = 0; q < names.size(); ++q) {
      old[static_cast<std::size_t>(names[q])] = static_cast<int>(q);
    }
    for (Gate& gate : found.gates) {
      for (int& q : gate.qbits) q = old[static_cast<std::size_t>(q)];
    }
    std::vector<int> wires(names.size());
    for (std::size_t q = 0; q < names.size(); ++q) {
      const int wire = found.wires[static_cast<std::size_t>(names[q])];
      wires[q] = old[static_cast<std::size_t>(wire)];
    }
    found.wires = std::move(wires);
  }
};

Method method_named(std::string_view name) {
  const auto* entry = std::ranges::find(methods, name, &std::pair<std::string_view, Method>::first);
  if (entry == std::end(methods)) raise_value_error("method: unknown");
  return entry->second;
}

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

void bind_pauli_search(nb::module_& m) {
  m.def("_gate_names", [] {
    std::vector<std::string> names;
    for (int k = 0; gate_name(k) != nullptr; ++k) names.emplace_back(gate_name(k));
    return names;
  });
  m.def(
      "_best_network",
      [](const std::string& method, const Letters& letters, bool in_order, int tail,
         std::optional<Graph> graph, std::uint64_t seed, int first, int last, bool by_depth,
         const SearchControl& control)
          -> std::optional<std::tuple<int, Operations, std::vector<int>, int, int>> {
        const Strings strings = to_strings(letters);
        const int qubits = static_cast<int>(letters.shape(1));
        std::optional<Graph> device = with_paths(std::move(graph));
        std::optional<internal::BitGraph> edges;
        if (device) edges.emplace(*device);
        const Search search{method_named(method),
                            strings,
                            qubits,
                            in_order,
                            static_cast<Tail>(tail),
                            device ? &*device : nullptr,
                            edges ? &*edges : nullptr,
                            seed,
                            by_depth};
        auto best = unlocked([&] {
          return best_of_runs(
              first, last, control.control(qubits), [&](int number) { return search.run(number); },
              search);
        });
        if (!best) return std::nullopt;
        Network& found = best->second;
        return std::tuple(best->first, to_operations(found.gates), std::move(found.wires),
                          found.cost.count, found.cost.depth);
      },
      "method"_a, "letters"_a, "in_order"_a, "tail"_a, "graph"_a.none(), "seed"_a, "first"_a,
      "last"_a, "by_depth"_a, "control"_a);
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
        const PauliFrame frame =
            PauliFrame::pack(to_strings(letters), static_cast<int>(letters.shape(1)));
        return unlocked([&] { return first_clash(frame); });
      },
      "letters"_a, "The first pair of strings that do not commute, or None.");
}

}  // namespace zelt::braidwerk::python
