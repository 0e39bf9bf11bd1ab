#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <tuple>

#include "convert.h"
#include "module.h"
#include "search.h"
#include "zeltbraidwerk/linear/internal/block_recursion.h"
#include "zeltbraidwerk/linear/internal/elimination.h"
#include "zeltbraidwerk/linear/internal/facing.h"
#include "zeltbraidwerk/linear/internal/factor_decoding.h"
#include "zeltbraidwerk/linear/internal/greedy.h"
#include "zeltbraidwerk/linear/internal/pair_elimination.h"

/// \file
/// What linear.synthesize stands on: every method in one form, run a number of times, the best
/// circuit kept. Run 0 is the method as it stands; the next three turn the matrix to its other
/// facings, and all later ones rename wires at random as well.
namespace zelt::braidwerk::python {

using internal::Control;
using internal::Draw;
using internal::Facing;
using internal::FreeCircuit;
using internal::GreedyCost;
using nb::literals::operator""_a;
using structures::CnotCircuit;

namespace {

struct MethodOptions {
  std::optional<int> section;
  int width;
  int lookahead;
};

/// A method writes a circuit of m into `found`, outputs where it likes; false: not finished.
using Method = bool (*)(const BitMatrix& m, FreeCircuit& found, const MethodOptions& options,
                        const Draw& draw, const Control& control);

/// A circuit that reduces m to the identity, as the eliminations give it.
bool reversed(FreeCircuit& found, CnotCircuit circuit) {
  found.circuit.gates = std::move(circuit.gates);
  found.circuit.reverse();
  return true;
}

bool gauss(const BitMatrix& m, FreeCircuit& found, const MethodOptions&, const Draw&,
           const Control&) {
  return reversed(found, internal::eliminate_gauss(m));
}

bool pmh(const BitMatrix& m, FreeCircuit& found, const MethodOptions& options, const Draw&,
         const Control&) {
  return reversed(
      found, options.section ? internal::pmh(m, *options.section) : internal::optimized_pmh(m));
}

bool pairs(const BitMatrix& m, FreeCircuit& found, const MethodOptions&, const Draw&,
           const Control&) {
  BitMatrix work = m;
  return reversed(found, CnotCircuit(m.rows(), internal::pair_elimination(work)));
}

bool blocks(const BitMatrix& m, FreeCircuit& found, const MethodOptions&, const Draw&,
            const Control& control) {
  internal::BlockRecursion recursion(found.circuit.gates, control);
  if (!recursion.reduce(m, found.perm.data())) return false;
  found.circuit.reverse();
  found.outputs_from_inputs();
  return true;
}

bool syndrome(const BitMatrix& m, FreeCircuit& found, const MethodOptions& options, const Draw&,
              const Control& control) {
  auto decoded = internal::decode_factors(m, found.perm, options.width, options.lookahead, control);
  return reversed(found, CnotCircuit(m.rows(), decoded.gates)) && decoded.finished;
}

template <GreedyCost cost>
bool greedy(const BitMatrix& m, FreeCircuit& found, const MethodOptions& options, const Draw& draw,
            const Control& control) {
  const internal::GreedyOptions greedy_options{.cost = cost,
                                               .beam = {options.width, options.lookahead}};
  auto result = internal::greedy_synthesis(m, found.perm, greedy_options, draw, control);
  found.circuit = std::move(result.circuit);
  return result.reduced;
}

constexpr std::pair<std::string_view, Method> methods[] = {
    {"gauss", gauss},
    {"pmh", pmh},
    {"pairs", pairs},
    {"blocks", blocks},
    {"syndrome", syndrome},
    {"greedy", greedy<GreedyCost::Ones>},
    {"greedy_inverse", greedy<GreedyCost::OnesWithInverse>},
    {"greedy_escape", greedy<GreedyCost::OnesWithEscape>},
    {"greedy_log", greedy<GreedyCost::Log>}};

Method method_named(std::string_view name) {
  const auto* entry = std::ranges::find(methods, name, &std::pair<std::string_view, Method>::first);
  if (entry == std::end(methods)) raise_value_error("method: unknown");
  return entry->second;
}

struct Search {
  Method method;
  const BitMatrix& m;
  MethodOptions options;
  std::uint64_t seed;
  bool exact;
  Better better;
  Control control;

  /// Nothing when the run did not finish.
  std::optional<FreeCircuit> run(int number) const {
    internal::SeededDraw engine(seed, static_cast<std::uint32_t>(number));
    const Draw draw = std::ref(engine);
    const auto facing = static_cast<Facing>(number % 4);
    BitMatrix faced = internal::face(m, facing);
    std::optional<internal::Renaming> renaming;
    if (number >= 4) {
      const std::vector<int> rows = shuffled(m.rows(), draw);
      // Where the outputs must be in place, the same names on both sides keep them there.
      renaming = {rows, exact ? rows : shuffled(m.rows(), draw)};
      faced = (*renaming)(faced);
    }
    FreeCircuit found(m.rows());
    if (!method(faced, found, options, draw, control)) return std::nullopt;
    if (renaming) found.rename_back(*renaming);
    found.face_back(facing);
    return exact ? closed(std::move(found), better, draw) : std::move(found);
  }
};

}  // namespace

void bind_linear_search(nb::module_& m) {
  nb::class_<SearchControl>(m, "_SearchControl")
      .def(nb::init<std::optional<double>>(), "seconds"_a.none())
      .def("stop", [](SearchControl& c) { c.stop = true; })
      .def("news",
           [](SearchControl& c) {
             std::vector<std::tuple<double, int, int>> news;
             for (const auto& point : c.news()) {
               news.emplace_back(point.seconds, point.count, point.depth);
             }
             return news;
           })
      .def("bound",
           [](SearchControl& c) {
             const internal::LowerBound bound = c.bound();
             return std::tuple(bound.count, bound.depth);
           })
      .def("ended", [](const SearchControl& c) { return c.control(0).stop_requested(); });
  m.def(
      "_best_of_runs",
      [](const std::string& method, const ArrayLike& matrix, std::optional<int> section, int width,
         int lookahead, std::uint64_t seed, int first, int last, bool exact, bool by_depth,
         const SearchControl& control)
          -> std::optional<std::tuple<int, IntArray2, std::vector<int>>> {
        const BitMatrix bits = to_bits(matrix, "matrix");
        const Method run = method_named(method);
        const MethodOptions options{section, width, lookahead};
        const Search search{
            run, bits, options, seed, exact, Better{by_depth}, control.control(bits.rows())};
        auto best = unlocked([&] {
          return best_of_runs(
              first, last, search.control, [&](int number) { return search.run(number); },
              [&](const FreeCircuit& a, const FreeCircuit& b) {
                return search.better(a.circuit, b.circuit);
              });
        });
        if (!best) return std::nullopt;
        return std::tuple(best->first, to_numpy(best->second.circuit.gates),
                          std::move(best->second.perm));
      },
      "method"_a, "matrix"_a, "section"_a.none(), "width"_a, "lookahead"_a, "seed"_a, "first"_a,
      "last"_a, "exact"_a, "by_depth"_a, "control"_a);
}

}  // namespace zelt::braidwerk::python
