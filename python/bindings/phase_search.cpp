#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <string>

#include "convert.h"
#include "module.h"
#include "search.h"
#include "zeltbraidwerk/linear/internal/elimination.h"
#include "zeltbraidwerk/linear/internal/greedy.h"
#include "zeltbraidwerk/linear/internal/row_column.h"
#include "zeltbraidwerk/phase/internal/graph_walk.h"
#include "zeltbraidwerk/phase/internal/gray_synth.h"
#include "zeltbraidwerk/phase/internal/greedy_network.h"

/// \file
/// What phase.synthesize stands on. Run 0 takes the qubits in their order, later ones rename
/// them. Every run is closed by one quick synthesis of what it leaves behind, so that the whole
/// of it counts.
namespace zelt::braidwerk::python {

using internal::BitGraph;
using internal::Draw;
using internal::FreeCircuit;
using internal::PhaseStep;
using nb::literals::operator""_a;
using structures::CnotCircuit;

namespace {

enum class Leftover { returned, closed, closed_freely };

struct PhaseRun {
  std::vector<PhaseStep> steps;
  FreeCircuit closing;

  CnotCircuit cnots() const {
    CnotCircuit all(closing.circuit.nbqbits);
    for (const PhaseStep& step : steps) {
      if (step.is_cnot()) all.gates.emplace_back(step.control, step.target);
    }
    all.gates.insert(all.gates.end(), closing.circuit.gates.begin(), closing.circuit.gates.end());
    return all;
  }
};

struct Search {
  const BitMatrix& parities;
  const BitGraph* graph;  // null: any two qubits may be joined
  bool greedy;
  Leftover leftover;
  std::uint64_t seed;
  Better better;
  internal::Control control;

  int qubits() const { return parities.rows(); }

  std::optional<PhaseRun> run(int number) const {
    internal::SeededDraw engine(seed, static_cast<std::uint32_t>(number));
    const Draw draw = std::ref(engine);
    auto steps = network(number, draw);
    if (!steps) return std::nullopt;
    PhaseRun run{std::move(*steps), FreeCircuit(qubits())};
    if (leftover == Leftover::returned) return run;
    auto closing = closed_by(internal::inverse(internal::linear_map(run.steps, qubits())), draw,
                             control_of_run(control, number));
    if (!closing) return std::nullopt;
    run.closing = std::move(*closing);
    return run;
  }

 private:
  std::optional<std::vector<PhaseStep>> network(int number, const Draw& draw) const {
    if (greedy) {
      // Sets without structure want the map left out, those of adders and multipliers the most of
      // it; which one it is shows in the runs.
      constexpr double shares[] = {0.0003, 0, 0.001, 0.01};
      internal::GreedyNetworkOptions options;
      if (number > 0) options.decay = 0.01 * draw(35, 95);
      if (leftover != Leftover::returned) options.map_share = shares[number % 4];
      return internal::greedy_network(parities, options, draw, control);
    }
    std::vector<int> names = shuffled(qubits(), draw);
    if (number == 0) std::iota(names.begin(), names.end(), 0);
    BitMatrix table(qubits(), parities.cols());
    for (int v = 0; v < qubits(); ++v) {
      const internal::Word* row = parities.row(names[static_cast<std::size_t>(v)]);
      std::copy_n(row, parities.stride(), table.row(v));
    }
    auto steps = graph != nullptr ? walk(std::move(table), names) : gray_synth(std::move(table));
    for (PhaseStep& step : steps) {
      step.target = names[static_cast<std::size_t>(step.target)];
      if (step.is_cnot()) step.control = names[static_cast<std::size_t>(step.control)];
    }
    return steps;
  }

  std::vector<PhaseStep> walk(BitMatrix table, const std::vector<int>& names) const {
    structures::Graph device(qubits());
    renamed(*graph, names).unpack_into(device);
    internal::VertexSet rows(qubits());
    for (int v = 0; v < qubits(); ++v) rows.insert(v);
    internal::Columns columns = internal::all_columns(table.cols());
    internal::GraphWalk walker(device, std::move(table));
    walker.reduce(columns);
    walker.base_step(columns, rows);
    return walker.steps();
  }

  std::optional<FreeCircuit> closed_by(const BitMatrix& m, const Draw& draw,
                                       const internal::Control& own) const {
    const bool free = leftover == Leftover::closed_freely;
    FreeCircuit found(qubits());
    if (graph != nullptr) {
      if (!internal::row_column_synthesis(m, *graph, {free, 0}, draw, own, found)) {
        return std::nullopt;
      }
      return found;
    }
    const internal::GreedyOptions options{.cost = internal::GreedyCost::OnesWithInverse,
                                          .beam = {1, 1}};
    auto result = internal::greedy_synthesis(m, found.perm, options, draw, own);
    if (result.reduced) {
      found.circuit = std::move(result.circuit);
      return free ? std::move(found) : closed(std::move(found), better, draw);
    }
    if (own.stop_requested()) return std::nullopt;
    found = FreeCircuit(internal::optimized_pmh(m), found.perm);
    std::iota(found.perm.begin(), found.perm.end(), 0);
    found.circuit.reverse();
    return found;
  }
};

TableOf<int> rows_of(const std::vector<PhaseStep>& steps) {
  TableOf<int> rows;
  for (const auto& [control, target, term] : steps) rows.push_back({control, target, term});
  return rows;
}

}  // namespace

void bind_phase_search(nb::module_& m) {
  m.def(
      "_best_of_phase_runs",
      [](const std::string& method, const ArrayLike& parities, const ArrayLike& adjacency,
         const std::string& ending, std::uint64_t seed, int first, int last, bool by_depth,
         const SearchControl& control)
          -> std::optional<std::tuple<int, IntArray2, IntArray2, std::vector<int>>> {
        const BitMatrix bits = to_bits(parities, "parities");
        const BitGraph graph = to_graph(adjacency);
        const Search search{bits,
                            graph.size() > 0 ? &graph : nullptr,
                            method == "greedy",
                            ending == "return"  ? Leftover::returned
                            : ending == "exact" ? Leftover::closed
                                                : Leftover::closed_freely,
                            seed,
                            Better{by_depth},
                            control.control(bits.rows())};
        auto best = unlocked([&] {
          return best_of_runs(
              first, last, search.control, [&](int number) { return search.run(number); },
              [&](const PhaseRun& a, const PhaseRun& b) {
                return search.better(a.cnots(), b.cnots());
              });
        });
        if (!best) return std::nullopt;
        PhaseRun& run = best->second;
        return std::tuple(best->first, to_numpy(rows_of(run.steps)),
                          to_numpy(run.closing.circuit.gates), std::move(run.closing.perm));
      },
      "method"_a, "parities"_a, "adjacency"_a, "ending"_a, "seed"_a, "first"_a, "last"_a,
      "by_depth"_a, "control"_a);
}

}  // namespace zelt::braidwerk::python
