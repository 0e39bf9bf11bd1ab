#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/draw.h"
#include "zeltbraidwerk/foundations/random.h"

namespace zelt::braidwerk::internal {

/// A Draw from an engine of its own, seeded from one draw of the random device.
template <typename Engine>
Draw device_draw() {
  return [engine = Engine(random::get_random_seed())](int a, int b) mutable {
    return static_cast<int>(std::uniform_int_distribution<std::int64_t>(a, b)(engine));
  };
}

/// Step `place` of a forward Fisher-Yates shuffle: one of the items from there on, drawn uniformly,
/// takes that place. The places before it are then as a full shuffle would have left them.
template <typename Item>
void shuffle_step(std::vector<Item>& items, std::size_t place, const Draw& draw) {
  if (place + 1 >= items.size()) return;
  const int offset = draw(0, static_cast<int>(items.size() - 1 - place));
  if (offset != 0) std::swap(items[place], items[place + static_cast<std::size_t>(offset)]);
}

}  // namespace zelt::braidwerk::internal
