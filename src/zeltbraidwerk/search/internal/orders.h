#pragma once

#include <cstddef>
#include <numeric>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/draw.h"

namespace zelt::braidwerk::internal {

/// 0 to n-1.
inline std::vector<int> in_order(int n) {
  std::vector<int> order(static_cast<std::size_t>(n));
  std::iota(order.begin(), order.end(), 0);
  return order;
}

/// 0 to n-1 in an order that was drawn.
inline std::vector<int> shuffled(int n, const Draw& draw) {
  std::vector<int> order = in_order(n);
  for (int i = n - 1; i > 0; --i) {
    std::swap(order[static_cast<std::size_t>(i)], order[static_cast<std::size_t>(draw(0, i))]);
  }
  return order;
}

}  // namespace zelt::braidwerk::internal
