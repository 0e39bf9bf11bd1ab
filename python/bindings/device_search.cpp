#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <string>

#include "convert.h"
#include "module.h"
#include "search.h"
#include "zeltbraidwerk/foundations/internal/packed_table.h"
#include "zeltbraidwerk/graphs/internal/hamiltonian_path.h"
#include "zeltbraidwerk/graphs/internal/steiner_gauss.h"
#include "zeltbraidwerk/linear/internal/row_column.h"

/// \file
/// What linear.synthesize stands on when there is a device. Run 0 is the method as it stands, the
/// next three turn the matrix to its other facings, and all later ones walk another Hamiltonian
/// path, or rename the vertices.
namespace zelt::braidwerk::python {

using internal::BitGraph;
using internal::Draw;
using internal::Facing;
using internal::FreeCircuit;
using nb::literals::operator""_a;

namespace {

struct Search {
  const BitMatrix& m;
  const BitGraph& graph;
  const std::vector<int>& path;  // empty where the method needs none
  std::uint64_t seed;
  bool free;
  internal::Control control;

  std::optional<FreeCircuit> run(int number) const {
    internal::SeededDraw engine(seed, static_cast<std::uint32_t>(number));
    const Draw draw = std::ref(engine);
    if (!path.empty()) return along_path(number, draw);
    // Another facing would leave outputs that may move on wires of another numbering.
    const auto facing = free ? Facing::plain : static_cast<Facing>(number % 4);
    const BitMatrix faced = internal::face(m, facing);
    const internal::Control own = control_of_run(control, number);
    if (number < 4) return by_rows_and_columns(faced, graph, facing, 0, draw, own);

    const std::vector<int> names = shuffled(m.rows(), draw);
    const internal::Renaming renaming{names, names};
    auto found = by_rows_and_columns(renaming(faced), renamed(graph, names), Facing::plain,
                                     number / 4 % 3, draw, own);
    if (found) {
      found->rename_back(renaming);
      found->face_back(facing);
    }
    return found;
  }

 private:
  std::optional<FreeCircuit> by_rows_and_columns(const BitMatrix& faced, const BitGraph& on,
                                                 Facing facing, int slack, const Draw& draw,
                                                 const internal::Control& own) const {
    FreeCircuit found(m.rows());
    if (!internal::row_column_synthesis(faced, on, {free, slack}, draw, own, found)) {
      return std::nullopt;
    }
    found.face_back(facing);
    return found;
  }

  FreeCircuit along_path(int number, const Draw& draw) const {
    const auto facing = static_cast<Facing>(number % 4);
    std::vector<int> walk = path;
    if (number >= 4) internal::vary_hamiltonian_path(graph, walk, draw);
    structures::Graph device(graph.size());
    graph.unpack_into(device);
    const auto table = internal::unpack_table(internal::face(m, facing));
    FreeCircuit found(m.rows());
    for (const auto& [c, t] : internal::steiner_gauss_ham_path(table, device, walk, draw)) {
      found.circuit.gates.emplace_back(c, t);
    }
    found.circuit.reverse();
    found.face_back(facing);
    return found;
  }
};

}  // namespace

void bind_device_search(nb::module_& m) {
  m.def(
      "_hamiltonian_path",
      [](const ArrayLike& adjacency, int steps,
         const SearchControl& search) -> std::tuple<std::string, std::vector<int>> {
        const BitGraph graph = to_graph(adjacency);
        internal::Control control = search.control(graph.size());
        control.max_operations = steps;
        auto [outcome, path] =
            unlocked([&] { return internal::find_hamiltonian_path(graph, control); });
        const char* const names[] = {"found", "none", "unfinished"};
        return {names[outcome], std::move(path)};
      },
      "adjacency"_a, "steps"_a, "control"_a);
  m.def(
      "_best_of_device_runs",
      [](const ArrayLike& matrix, const ArrayLike& adjacency, const std::vector<int>& path,
         std::uint64_t seed, int first, int last, bool free, bool by_depth,
         const SearchControl& control)
          -> std::optional<std::tuple<int, IntArray2, std::vector<int>>> {
        const BitMatrix bits = to_bits(matrix, "matrix");
        const BitGraph graph = to_graph(adjacency);
        const Search search{bits, graph, path, seed, free, control.control(bits.rows())};
        auto best = unlocked([&] {
          return best_of_runs(
              first, last, search.control, [&](int number) { return search.run(number); },
              [&](const FreeCircuit& a, const FreeCircuit& b) {
                return Better{by_depth}(a.circuit, b.circuit);
              });
        });
        if (!best) return std::nullopt;
        return std::tuple(best->first, to_numpy(best->second.circuit.gates),
                          std::move(best->second.perm));
      },
      "matrix"_a, "adjacency"_a, "path"_a, "seed"_a, "first"_a, "last"_a, "free"_a, "by_depth"_a,
      "control"_a);
}

}  // namespace zelt::braidwerk::python
