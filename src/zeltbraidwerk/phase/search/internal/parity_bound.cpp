#include "zeltbraidwerk/phase/search/internal/parity_bound.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <numeric>
#include <span>
#include <vector>

#include "zeltbraidwerk/linear/search/internal/device_rewriter.h"
#include "zeltbraidwerk/linear/search/internal/map_bound.h"
#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {

namespace {

/// As many as possible, the lightest first, that have no wire in common with another one.
int apart(const BitMatrix& by_parity) {
  std::vector<int> order(static_cast<std::size_t>(by_parity.rows()));
  std::iota(order.begin(), order.end(), 0);
  std::ranges::stable_sort(order, {}, [&](int p) { return by_parity.row_weight(p); });
  std::vector<Word> taken(static_cast<std::size_t>(by_parity.stride()));
  int found = 0;
  for (const int p : order) {
    const Word* row = by_parity.row(p);
    if (!std::equal(taken.begin(), taken.end(), row, [](Word a, Word b) { return (a & b) == 0; })) {
      continue;
    }
    std::ranges::transform(taken, std::span(row, taken.size()), taken.begin(), std::bit_or<>{});
    ++found;
  }
  return found;
}

}  // namespace

LowerBound bound_of_parities(const BitMatrix& parities, const Task& task) {
  const int n = parities.rows();
  const BitMatrix by_parity = parities.transposed();
  LowerBound bound;
  if (n < 2 || by_parity.rows() == 0) return bound;
  const bool undone = task.closes();
  std::vector<Distances> distances;
  if (task.device != nullptr) distances.emplace_back(*task.device);
  WireGroups groups(n);
  std::vector<bool> in_parities(static_cast<std::size_t>(n));
  for (int p = 0; p < by_parity.rows(); ++p) {
    std::vector<int> wires;
    for_each_bit(by_parity.row(p), by_parity.stride(), [&](int w) { wires.push_back(w); });
    for (const int w : wires) {
      groups.join(wires[0], w);
      in_parities[static_cast<std::size_t>(w)] = true;
    }
    const LowerBound there =
        bound_of_gathering(wires, distances.empty() ? nullptr : distances.data(), n);
    // With free outputs the way back may lead to nearer wires.
    const LowerBound back = task.in_place() ? there
                            : undone        ? bound_of_gathering(wires, nullptr, n)
                                            : LowerBound{};
    bound.raise({there.count + back.count, there.depth + back.depth});
  }
  bound.raise({groups.joins(), 0});
  bound.raise({by_parity.rows() + (undone ? apart(by_parity) : 0), 0});
  if (undone) bound.raise({static_cast<int>(std::ranges::count(in_parities, true)), 2});
  bound.raise({0, layers_to_hold(bound.count, n)});
  return bound;
}

}  // namespace zelt::braidwerk::internal
