#include "zeltbraidwerk/clifford/search/internal/placed_rewriter.h"

#include "zeltbraidwerk/clifford/search/internal/window_kind.h"
#include "zeltbraidwerk/clifford/search/internal/window_rewriter.h"

namespace zelt::braidwerk::internal {
namespace {

WindowGraph edges_between(const Window& window, const BitGraph& device) {
  WindowGraph edges = 0;
  for (int b = 1; b < window.size; ++b) {
    for (int a = 0; a < b; ++a) {
      if (device.joined(window.wires[static_cast<std::size_t>(a)],
                        window.wires[static_cast<std::size_t>(b)])) {
        edges |= window_edge(a, b);
      }
    }
  }
  return edges;
}

template <int wires>
End renamed(End end, const std::array<std::uint8_t, wires>& names) {
  return end_of(names[static_cast<std::size_t>(wire_of(end))], label_of(end));
}

template <int wires>
void rename(std::vector<Gate>& block, const std::array<std::uint8_t, wires>& names) {
  for (Gate& gate : block) gate = {renamed<wires>(gate.a, names), renamed<wires>(gate.b, names)};
}

}  // namespace

template <int wires>
bool PlacedRewriter::rewrite_on(const Window& window, float uphill, Rng& rng,
                                Rewrite& rewrite) const {
  const bool detour = rng.chance(uphill);
  if (window.gates.size() == 1 && !detour) return false;
  const auto& kind =
      kind_of<wires>(device_ == nullptr ? complete_window<wires> : edges_between(window, *device_));
  std::array<std::uint8_t, wires> place{};
  for (std::uint8_t p = 0; p < wires; ++p) place[kind.name[p]] = p;

  std::vector<Gate>& block = rewrite.block;
  block = window.gates;
  rename<wires>(block, kind.name);
  const WindowRows rows = rows_of(block, wires);
  block.clear();
  const bool last = outputs_ == Outputs::anywhere && window.to_end == (1U << wires) - 1;
  const WindowRows left =
      last ? append_reordered_circuit<wires>(*kind.table, rows, random_places<wires>(rng), detour,
                                             rng, block)
           : append_placed_circuit(*kind.table, rows, detour, rng, block);
  if (block.size() > window.gates.size() + (detour ? 1 : 0)) return false;
  rename<wires>(block, place);

  Rewrite by_name;
  read_ends<wires>(left, by_name);
  rewrite.renames = by_name.renames;
  for (std::size_t p = 0; p < wires; ++p) {
    for (std::size_t label = 0; label < 4; ++label) {
      rewrite.ends[p][label] = renamed<wires>(by_name.ends[kind.name[p]][label], place);
    }
  }
  return true;
}

bool PlacedRewriter::rewrite(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) const {
  switch (window.size) {
    case 2:
      return rewrite_on<2>(window, uphill, rng, rewrite);
    case 3:
      return rewrite_on<3>(window, uphill, rng, rewrite);
    default:
      return rewrite_on<4>(window, uphill, rng, rewrite);
  }
}

}  // namespace zelt::braidwerk::internal
