#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <numeric>
#include <vector>

#include "zeltbraidwerk/foundations/internal/unforkable.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// The pairs of a window's wires that gates may be on: see pair_bit.
using WindowGraph = std::uint16_t;

/// Pair {a, b} with a < b is bit b (b - 1) / 2 + a.
constexpr WindowGraph pair_bit(int a, int b) {
  const int low = a < b ? a : b;
  const int high = a < b ? b : a;
  return static_cast<WindowGraph>(1U << (high * (high - 1) / 2 + low));
}
constexpr WindowGraph complete_graph(int wires) {
  return static_cast<WindowGraph>((1U << (wires * (wires - 1) / 2)) - 1);
}

/// The pairs of the window's wires that are joined on a device.
template <class Device>
WindowGraph edges_within(const Window& window, const Device& device) {
  unsigned edges = 0;
  for (int b = 1; b < window.size; ++b) {
    for (int a = 0; a < b; ++a) {
      const bool joined = device.joined(window.wires[static_cast<std::size_t>(a)],
                                        window.wires[static_cast<std::size_t>(b)]);
      if (joined) edges |= pair_bit(a, b);
    }
  }
  return static_cast<WindowGraph>(edges);
}

/// Another name for each wire of a window; those beyond its wires keep their own.
using WireNames = std::array<std::uint8_t, most_window_wires>;

inline std::vector<WireNames> all_names(int wires) {
  WireNames names;
  std::iota(names.begin(), names.end(), std::uint8_t{0});
  std::vector<WireNames> all;
  do {
    all.push_back(names);
  } while (std::next_permutation(names.begin(), names.begin() + wires));
  return all;
}

inline WindowGraph renamed(int wires, WindowGraph graph, const WireNames& names) {
  unsigned result = 0;
  for (int b = 1; b < wires; ++b) {
    for (int a = 0; a < b; ++a) {
      if ((graph & pair_bit(a, b)) == 0) continue;
      result |= pair_bit(names[static_cast<std::size_t>(a)], names[static_cast<std::size_t>(b)]);
    }
  }
  return static_cast<WindowGraph>(result);
}

/// Graphs that differ by the names of their wires share a table: that of the least of them. Here is
/// the least one, and the name of each wire in it.
struct NamedGraph {
  WindowGraph graph;
  WireNames names;
};

/// Ties between names: the first in lexicographic order.
inline const NamedGraph& least_graph(int wires, WindowGraph graph) {
  static const auto by_wires = [] {
    std::array<std::vector<NamedGraph>, most_window_wires + 1> made;
    for (int k = 2; k <= most_window_wires; ++k) {
      const std::vector<WireNames> namings = all_names(k);
      for (unsigned g = 0; g <= complete_graph(k); ++g) {
        NamedGraph best{static_cast<WindowGraph>(g), namings[0]};
        for (const WireNames& names : namings) {
          const WindowGraph other = renamed(k, static_cast<WindowGraph>(g), names);
          if (other < best.graph) best = {other, names};
        }
        made[static_cast<std::size_t>(k)].push_back(best);
      }
    }
    return made;
  }();
  return by_wires[static_cast<std::size_t>(wires)][graph];
}

/// Tables that are built when they are first asked for, and stay until the process ends. Safe to
/// call from all threads; only those that ask for the same table wait for each other.
template <class Key, class Table>
class TableCache {
 public:
  template <class Make>
  const Table& get(const Key& key, Make&& make) {
    const Unforkable waiting;
    Slot* slot;
    {
      const std::lock_guard lock(mutex_);
      slot = &slots_[key];
    }
    const std::lock_guard lock(slot->mutex);
    if (!slot->table) slot->table = std::make_unique<const Table>(make());
    return *slot->table;
  }

 private:
  struct Slot {
    std::mutex mutex;
    std::unique_ptr<const Table> table;
  };
  std::mutex mutex_;
  std::map<Key, Slot> slots_;  // no element ever moves
};

}  // namespace zelt::braidwerk::internal
