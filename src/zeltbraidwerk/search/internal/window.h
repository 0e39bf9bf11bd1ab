#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zeltbraidwerk/search/internal/rng.h"

namespace zelt::braidwerk::internal {

/// One end of a gate: a wire, and a Pauli label on it in the lowest two bits, 1 to 3.
using End = std::uint16_t;

inline constexpr int most_wires = 1 << 14;

constexpr End end_of(int wire, int label) {
  return static_cast<End>(wire << 2 | label);
}
constexpr int wire_of(End end) {
  return end >> 2;
}
constexpr int label_of(End end) {
  return end & 3;
}

/// A gate on two wires. Gates commute where on every wire that they share their labels are equal:
/// that is all the engine knows of them. A CNOT has label_z on its control and label_x on its
/// target.
struct Gate {
  End a;
  End b;
  bool operator==(const Gate&) const = default;
};

inline constexpr int label_wire = 0;  ///< no Pauli label: the wire itself
inline constexpr int label_x = 1;
inline constexpr int label_z = 2;
inline constexpr int label_y = 3;

constexpr Gate cnot(int control, int target) {
  return {end_of(control, label_z), end_of(target, label_x)};
}

inline constexpr int most_window_wires = 5;

/// Gates of a list that can be brought together, on a few wires.
struct Window {
  int size = 0;                                        ///< wires
  std::array<std::uint16_t, most_window_wires> wires;  ///< place -> wire
  std::vector<Gate> gates;     ///< the block in time order, on places instead of wires
  std::vector<int> positions;  ///< of the block's gates in the list
  int first = 0;               ///< the block's gates and those skipped lie in [first, last)
  int centre = 0;              ///< gates skipped before it stay before the block
  int last = 0;
  /// Places that no gate before the block touches, and those that none after it touches; 0 where
  /// the block was complete before the whole list was seen.
  unsigned from_start = 0;
  unsigned to_end = 0;
};

/// Puts `block` in the place of what a list, of gates or of something by gate, has at the window's
/// positions: what was skipped before it stays before it, what was skipped after it stays after it.
/// Returns the position after the new block.
template <class T>
int put_block(std::vector<T>& list, const Window& window, const std::vector<T>& block) {
  const std::vector<int>& positions = window.positions;
  std::size_t next = 0;
  auto out = list.begin() + window.first;
  for (int p = window.first; p < window.centre; ++p) {
    if (next < positions.size() && positions[next] == p) {
      ++next;
    } else {
      *out++ = list[static_cast<std::size_t>(p)];
    }
  }
  std::size_t last = positions.size();
  auto after = list.begin() + window.last;
  for (int p = window.last - 1; p >= window.centre; --p) {
    if (last > next && positions[last - 1] == p) {
      --last;
    } else {
      *--after = list[static_cast<std::size_t>(p)];
    }
  }
  if (block.size() < positions.size()) {
    out = list.erase(out, after - static_cast<std::ptrdiff_t>(block.size()));
  } else if (block.size() > positions.size()) {
    out = list.insert(out, block.size() - positions.size(), T{});
  }
  return static_cast<int>(std::copy(block.begin(), block.end(), out) - list.begin());
}

/// Which gates may move past which on the way to the block.
enum class Gathering {
  by_labels,  ///< a gate may pass one that commutes with it
  of_cnots,   ///< the same, found sooner, for CNOTs only
  /// The same, but what a gate makes of its wires must stay the same too: it may pass a gate that
  /// shares no more than its control with it. For CNOTs only.
  by_values,
};

/// Finds windows around gates of a list. Holds a table of the wires: one finder per thread.
class WindowFinder {
 public:
  explicit WindowFinder(int wires) : place_(static_cast<std::size_t>(wires), none) {}

  /// A window of up to `size` wires around gate `at`: wires are added by going through the list in
  /// both directions at random and taking, three times in four, the other wire of a gate that has
  /// one in the window. The block then takes in, forward and backward, every gate on these wires
  /// that commutes with those skipped on the way.
  void find(const std::vector<Gate>& list, int at, int size, Gathering gathering, Rng& rng,
            Window& window);

  /// put_block of a block of gates on places.
  static int replace(std::vector<Gate>& list, const Window& window, const std::vector<Gate>& block);

 private:
  static constexpr std::uint8_t none = 255;

  void grow(const std::vector<Gate>& list, int at, int size, Rng& rng, Window& window);
  void gather(const std::vector<Gate>& list, int at, Gathering gathering, Window& window);
  template <Gathering gathering>
  void scan_both(const std::vector<Gate>& list, int at, Window& window);
  template <int direction, Gathering gathering>
  void scan(const std::vector<Gate>& list, int at, Window& window);
  int place(End end) const { return place_[static_cast<std::size_t>(wire_of(end))]; }
  void enter(int wire, Window& window);

  std::vector<std::uint8_t> place_;  // by wire
};

}  // namespace zelt::braidwerk::internal
