#include "zeltbraidwerk/clifford/search/internal/placed_rewriter.h"

#include "zeltbraidwerk/clifford/search/internal/state_gauge.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/clifford/search/internal/window_rewriter.h"

namespace zelt::braidwerk::internal {
namespace {

End renamed(End end, const WireNames& names) {
  return end_of(names[static_cast<std::size_t>(wire_of(end))], label_of(end));
}

void rename(std::vector<Gate>& block, const WireNames& names) {
  for (Gate& gate : block) gate = {renamed(gate.a, names), renamed(gate.b, names)};
}

/// The operator after Z on one of the wires controls something: of a few choices, one with the
/// fewest gates.
template <int wires>
WindowRows best_after_zero(const PlacedTable<wires>& table, unsigned fresh, WindowRows rows,
                           Rng& rng) {
  const auto zero = static_cast<unsigned>(random_move(fresh, rng));
  const unsigned control = unsigned{label_z} << (2 * zero);
  const unsigned others = ((1U << (2 * wires)) - 1) & ~(3U << (2 * zero));
  WindowRows best = rows;
  int least = table.distance(rows);
  for (int k = 0; k < placed_state_tuning.gauges; ++k) {
    const auto letters = static_cast<unsigned>(rng.below(1 << (2 * wires - 2)));
    const WindowRows same = rows_after_control(control, deposited(letters, others), rows);
    const int distance = table.distance(same);
    if (distance < 0 || distance > least) continue;
    least = distance;
    best = same;
  }
  return best;
}

}  // namespace

template <int wires>
bool PlacedRewriter::rewrite_on(const Window& window, float uphill, Rng& rng,
                                Rewrite& rewrite) const {
  const bool detour = rng.chance(uphill);
  const bool zeros = inputs_ == Inputs::zeros && window.from_start != 0;
  if (window.gates.size() == 1 && !detour && !zeros) return false;
  const NamedGraph& named = least_graph(
      wires, device_ == nullptr ? complete_graph(wires) : edges_within(window, *device_));
  const auto& table = PlacedTable<wires>::of(named.graph);
  WireNames place{};
  for (std::uint8_t p = 0; p < wires; ++p) place[named.names[p]] = p;

  std::vector<Gate>& block = rewrite.block;
  block = window.gates;
  rename(block, named.names);
  WindowRows rows = rows_of(block, wires);
  if (zeros) {
    unsigned fresh = 0;
    for (unsigned p = 0; p < wires; ++p) {
      if ((window.from_start >> p & 1) != 0) fresh |= 1U << named.names[p];
    }
    rows = best_after_zero<wires>(table, fresh, rows, rng);
  }
  block.clear();
  const bool last = outputs_ == Outputs::anywhere && window.to_end == (1U << wires) - 1;
  const WindowRows left = last ? append_reordered_circuit<wires>(
                                     table, rows, random_places<wires>(rng), detour, rng, block)
                               : append_placed_circuit(table, rows, detour, rng, block);
  if (block.size() > window.gates.size() + (detour ? 1 : 0)) return false;
  rename(block, place);

  Rewrite by_name;
  read_ends<wires>(left, by_name);
  rewrite.renames = by_name.renames;
  for (std::size_t p = 0; p < wires; ++p) {
    for (std::size_t label = 0; label < 4; ++label) {
      rewrite.ends[p][label] = renamed(by_name.ends[named.names[p]][label], place);
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
