#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <numeric>
#include <vector>

namespace zelt::braidwerk::internal {

/// The fewest layers by which a value can come from one wire to that number of wires: each layer
/// at most doubles the wires that have it.
inline int layers_to_spread(int wires) {
  return std::bit_width(static_cast<unsigned>(std::max(wires, 1) - 1));
}

/// The fewest layers that hold that number of gates.
inline int layers_to_hold(int gates, int wires) {
  const int most = std::max(wires / 2, 1);
  return (gates + most - 1) / most;
}

/// Wires in groups that grow together: a gate joins the groups of its two wires, so wires that have
/// to be joined take at least as many gates as there are joins.
class WireGroups {
 public:
  explicit WireGroups(int wires)
      : group_(static_cast<std::size_t>(wires)), size_(static_cast<std::size_t>(wires), 1) {
    std::iota(group_.begin(), group_.end(), 0);
  }

  /// False when they were in one group before.
  bool join(int a, int b) {
    const int from = group(a);
    const int to = group(b);
    if (from == to) return false;
    group_[static_cast<std::size_t>(from)] = to;
    size_[static_cast<std::size_t>(to)] += size_[static_cast<std::size_t>(from)];
    largest_ = std::max(largest_, size_[static_cast<std::size_t>(to)]);
    ++joins_;
    return true;
  }

  int group(int wire) {
    while (true) {
      int& up = group_[static_cast<std::size_t>(wire)];
      if (up == wire) return wire;
      wire = up = group_[static_cast<std::size_t>(up)];
    }
  }
  int joins() const { return joins_; }
  int largest() const { return largest_; }  ///< wires of a group

 private:
  std::vector<int> group_;
  std::vector<int> size_;
  int joins_ = 0;
  int largest_ = 1;
};

}  // namespace zelt::braidwerk::internal
