#include "zeltbraidwerk/pauli/search/internal/network_bound.h"

#include <algorithm>
#include <set>
#include <vector>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/linear/search/internal/device_rewriter.h"
#include "zeltbraidwerk/linear/search/internal/map_bound.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {

LowerBound bound_of_network(const PauliFrame& strings, const NetworkTask& task) {
  const int n = strings.qubits();
  LowerBound bound;
  if (n < 2) return bound;
  const bool undone = task.closes();
  std::vector<Distances> distances;
  if (task.device != nullptr) distances.emplace_back(*task.device);
  const Distances* far = distances.empty() ? nullptr : distances.data();
  WireGroups groups(n);
  std::vector<bool> in_strings(static_cast<std::size_t>(n));
  std::set<PauliLetters> different;
  const BitMatrix supports = strings.supports();
  for (int row = 0; row < strings.rows(); ++row) {
    stop_point();
    std::vector<int> wires;
    for_each_bit(supports.row(row), supports.stride(), [&](int w) { wires.push_back(w); });
    if (wires.size() < 2) continue;
    different.insert(strings.letters(row));
    for (const int w : wires) {
      groups.join(wires[0], w);
      in_strings[static_cast<std::size_t>(w)] = true;
    }
    const LowerBound there = bound_of_gathering(wires, far, n);
    // On other wires at the end they may be nearer.
    const LowerBound back = task.in_place() ? there
                            : undone        ? bound_of_gathering(wires, nullptr, n)
                                            : LowerBound{};
    bound.raise({there.count + back.count, there.depth + back.depth});
  }
  if (different.empty()) return bound;
  const auto gates_to_show = static_cast<int>((different.size() + 3) / 4);
  bound.raise({gates_to_show + (undone ? 1 : 0), undone ? 2 : 1});
  bound.raise({groups.joins(), 0});
  if (undone) bound.raise({static_cast<int>(std::ranges::count(in_strings, true)), 0});
  bound.raise({0, layers_to_hold(bound.count, n)});
  return bound;
}

}  // namespace zelt::braidwerk::internal
