#include "zeltbraidwerk/clifford/search/internal/window_kind.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <mutex>
#include <numeric>

namespace zelt::braidwerk::internal {
namespace {

template <int wires>
std::uint64_t moves_on_edges(WindowGraph graph) {
  std::uint64_t moves = 0;
  for (int edge = 0; edge < wires * (wires - 1) / 2; ++edge) {
    if ((graph >> edge & 1) != 0) moves |= std::uint64_t{511} << (9 * edge);
  }
  return moves;
}

template <int wires>
WindowGraph renamed(WindowGraph graph, const std::array<std::uint8_t, wires>& name) {
  WindowGraph result = 0;
  for (int b = 1; b < wires; ++b) {
    for (int a = 0; a < b; ++a) {
      if ((graph & window_edge(a, b)) == 0) continue;
      result |= window_edge(name[static_cast<std::size_t>(a)], name[static_cast<std::size_t>(b)]);
    }
  }
  return result;
}

}  // namespace

template <int wires>
const WindowKind<wires>& kind_of(WindowGraph graph) {
  static std::array<WindowKind<wires>, complete_window<wires> + 1> kinds;
  static std::array<std::once_flag, complete_window<wires> + 1> made;
  static std::array<std::unique_ptr<PlacedTable<wires>>, complete_window<wires> + 1> tables;
  WindowKind<wires>& kind = kinds[graph];
  std::call_once(made[graph], [&] {
    std::array<std::uint8_t, wires> name{};
    std::iota(name.begin(), name.end(), std::uint8_t{0});
    kind.name = name;
    WindowGraph least = graph;
    do {
      if (renamed<wires>(graph, name) >= least) continue;
      least = renamed<wires>(graph, name);
      kind.name = name;
    } while (std::ranges::next_permutation(name).found);
    if (least != graph) {
      kind.table = kind_of<wires>(least).table;
    } else if (graph == complete_window<wires>) {
      kind.table = &PlacedTable<wires>::shared();
    } else {
      tables[graph] = std::make_unique<PlacedTable<wires>>(moves_on_edges<wires>(graph));
      kind.table = tables[graph].get();
    }
  });
  return kind;
}

template const WindowKind<2>& kind_of<2>(WindowGraph graph);
template const WindowKind<3>& kind_of<3>(WindowGraph graph);
template const WindowKind<4>& kind_of<4>(WindowGraph graph);

}  // namespace zelt::braidwerk::internal
