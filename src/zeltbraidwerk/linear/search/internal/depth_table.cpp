#include "zeltbraidwerk/linear/search/internal/depth_table.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <vector>

namespace zelt::braidwerk::internal {

namespace {

using Layer = std::vector<Gate>;

/// All sets of disjoint CNOTs but the empty one.
std::vector<Layer> all_layers(int wires) {
  std::vector<Layer> layers{{}};
  for (std::size_t k = 0; k < layers.size(); ++k) {
    // Gates in order of their lower wire, so that each set comes once.
    const Layer layer = layers[k];
    unsigned taken = 0;
    int first = 0;
    for (const Gate& gate : layer) {
      taken |= 1U << wire_of(gate.a) | 1U << wire_of(gate.b);
      first = std::min(wire_of(gate.a), wire_of(gate.b)) + 1;
    }
    for (int low = first; low < wires; ++low) {
      for (int high = low + 1; high < wires; ++high) {
        if (((taken >> low | taken >> high) & 1) != 0) continue;
        for (const Gate& gate : {cnot(low, high), cnot(high, low)}) {
          layers.push_back(layer);
          layers.back().push_back(gate);
        }
      }
    }
  }
  layers.erase(layers.begin());
  return layers;
}

/// By map, 255 for those that are not invertible.
std::vector<std::uint8_t> depths(int wires, bool permuted) {
  constexpr std::uint8_t unknown = 255;
  const MapTable& maps = MapTable::of(wires, complete_graph(wires), permuted);
  std::vector<std::uint8_t> depth(std::size_t{1} << (wires * wires), unknown);
  std::vector<SmallMatrix> level;
  std::array<int, most_tabled_wires> column{};
  std::iota(column.begin(), column.end(), 0);
  do {
    SmallMatrix m = 0;
    for (int r = 0; r < wires; ++r) {
      m |= SmallMatrix{1} << (wires * r + column[static_cast<std::size_t>(r)]);
    }
    depth[m] = 0;
    level.push_back(m);
  } while (permuted && std::next_permutation(column.begin(), column.begin() + wires));
  const std::vector<Layer> layers = all_layers(wires);
  for (std::uint8_t d = 1; !level.empty(); ++d) {
    std::vector<SmallMatrix> next;
    for (const SmallMatrix m : level) {
      for (const Layer& layer : layers) {
        SmallMatrix other = m;
        for (const Gate& gate : layer) other = maps.then(other, wire_of(gate.a), wire_of(gate.b));
        if (depth[other] != unknown) continue;
        depth[other] = d;
        next.push_back(other);
      }
    }
    level = std::move(next);
  }
  return depth;
}

template <int wires, bool permuted>
const std::vector<std::uint8_t>& table() {
  static const std::vector<std::uint8_t> depth = depths(wires, permuted);
  return depth;
}

}  // namespace

int fewest_layers(int wires, SmallMatrix m, bool permuted) {
  switch (wires) {
    case 2:
      return permuted ? table<2, true>()[m] : table<2, false>()[m];
    case 3:
      return permuted ? table<3, true>()[m] : table<3, false>()[m];
    default:
      return permuted ? table<4, true>()[m] : table<4, false>()[m];
  }
}

}  // namespace zelt::braidwerk::internal
