#include "zeltbraidwerk/clifford/search/internal/state_bound.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/search/internal/wire_groups.h"

namespace zelt::braidwerk::internal {

namespace {

constexpr int most_listed = 12;

/// X bits, then Z bits from bit 16 on.
using SmallString = std::uint32_t;

int weight(SmallString string) {
  return std::popcount((string | string >> 16) & 0xffffU);
}

/// The least d for which the products of at most 2^d letters make up all.
int layers_of_products(const std::vector<SmallString>& generators, int n) {
  const auto rows = static_cast<int>(generators.size());
  std::array<int, most_listed + 1> rank{};  // of the products of at most that number of letters
  std::array<std::vector<SmallString>, most_listed + 1> by_weight;
  SmallString product = 0;
  for (unsigned k = 1; k < 1U << rows; ++k) {  // in Gray code, one more factor or one less
    product ^= generators[static_cast<std::size_t>(std::countr_zero(k))];
    by_weight[static_cast<std::size_t>(weight(product))].push_back(product);
  }
  std::array<SmallString, 32> basis{};
  int found = 0;
  for (int w = 1; w <= n; ++w) {
    for (SmallString string : by_weight[static_cast<std::size_t>(w)]) {
      if (found == rows) break;
      while (string != 0) {
        SmallString& entry = basis[static_cast<std::size_t>(std::bit_width(string) - 1)];
        if (entry == 0) {
          entry = string;
          ++found;
          break;
        }
        string ^= entry;
      }
    }
    rank[static_cast<std::size_t>(w)] = found;
  }
  int layers = 0;
  while (rank[static_cast<std::size_t>(std::min(n, 1 << layers))] < rows && 1 << layers < n)
    ++layers;
  return layers;
}

}  // namespace

LowerBound bound_of_state(const PauliFrame& stabilisers, int joins, int largest_group) {
  const int n = stabilisers.qubits();
  LowerBound bound;
  if (n < 2 || joins == 0) return bound;
  bound.count = joins;
  bound.depth = std::max(largest_group > 2 ? 2 : 1, layers_to_hold(joins, n));
  if (n <= most_listed) {
    std::vector<SmallString> generators;
    for (int r = 0; r < stabilisers.rows(); ++r) {
      SmallString string = 0;
      for (int q = 0; q < n; ++q) {
        string |= SmallString{stabilisers.x_planes().get(q, r)} << q;
        string |= SmallString{stabilisers.z_planes().get(q, r)} << (16 + q);
      }
      generators.push_back(string);
    }
    bound.depth = std::max(bound.depth, layers_of_products(generators, n));
  }
  return bound;
}

}  // namespace zelt::braidwerk::internal
