#include "zeltbraidwerk/clifford/search/internal/tree_elimination.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/code.h"
#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {
namespace {

std::size_t at(int k) {
  return static_cast<std::size_t>(k);
}

constexpr int another_label(int label) {
  return label % 3 + 1;
}

/// Wires of a tree of the device, each after the one it hangs on.
struct Tree {
  std::vector<int> order;
  std::vector<int> parent;

  explicit Tree(const BitGraph& device) : parent(at(device.size()), -1) {
    VertexSet unmet(device.size());
    for (int v = 1; v < device.size(); ++v) unmet.insert(v);
    if (device.size() > 0) order.push_back(0);
    for (std::size_t k = 0; k < order.size(); ++k) {
      const std::size_t first = order.size();
      device.meet_neighbours(order[k], unmet, order);
      for (std::size_t m = first; m < order.size(); ++m) parent[at(order[m])] = order[k];
    }
  }
};

class TreeElimination {
 public:
  TreeElimination(const PauliFrame& stabilisers, const BitGraph& device)
      : strings_(stabilisers), tree_(device), on_way_(at(device.size())) {}

  GateList run() {
    const int n = strings_.qubits();
    std::vector<int> labels(at(n));
    for (auto wire = tree_.order.rbegin(); wire != tree_.order.rend(); ++wire) {
      stop_point();
      const int row = row_with_letter(*wire);
      bring_down(row, *wire);
      labels[at(*wire)] = label(row, *wire);
      finish(*wire);
    }
    GateList list(n, {});
    for (int q = 0; q < n; ++q) {
      std::swap(list.frame[end_of(q, labels[at(q)])], list.frame[end_of(q, label_z)]);
    }
    for (auto gate = apart_.rbegin(); gate != apart_.rend(); ++gate) {
      list.gates.push_back({list.frame[gate->a], list.frame[gate->b]});
    }
    return list;
  }

 private:
  int label(int row, int wire) const {
    return (strings_.x_planes().get(wire, row) ? label_x : 0) |
           (strings_.z_planes().get(wire, row) ? label_z : 0);
  }
  void apply(End a, End b) {
    apart_.push_back(wire_of(a) < wire_of(b) ? Gate{a, b} : Gate{b, a});
    apply_unsigned(strings_, apart_.back());
  }

  /// Every wire has letters, as the generators of all that are left are as many as these.
  int row_with_letter(int wire) const {
    for (int row = 0; row < strings_.rows(); ++row) {
      if (label(row, wire) != 0) return row;
    }
    return 0;
  }

  /// Leaves the row with one letter, on `wire`. The wires that are left are a tree with it as a
  /// leaf: from it the tree hangs by its parent, and what that hangs on in turn.
  void bring_down(int row, int wire) {
    std::vector<int> way;
    for (int v = wire; v >= 0; v = tree_.parent[at(v)]) way.push_back(v);
    for (const int v : way) on_way_[at(v)] = true;
    // First all that hangs on the way, leaves first, then the way itself.
    for (auto v = tree_.order.rbegin(); v != tree_.order.rend(); ++v) {
      if (!on_way_[at(*v)]) clear(row, *v, tree_.parent[at(*v)]);
    }
    for (std::size_t k = way.size(); k-- > 1;) clear(row, way[k], way[k - 1]);
    for (const int v : way) on_way_[at(v)] = false;
  }

  void clear(int row, int wire, int into) {
    const int letter = label(row, wire);
    if (letter == 0) return;
    if (label(row, into) == 0) apply(end_of(into, label_x), end_of(wire, another_label(letter)));
    apply(end_of(into, another_label(label(row, into))), end_of(wire, label(row, wire)));
  }

  /// All that have a letter on the wire have the same one: multiplied by the one that was brought
  /// down they have none.
  void finish(int wire) {
    for (int row = 0; row < strings_.rows(); ++row) strings_.set_letter(row, wire, 0);
  }

  PauliFrame strings_;
  Tree tree_;
  std::vector<bool> on_way_;
  std::vector<Gate> apart_;
};

}  // namespace

GateList eliminated_on_device(const PauliFrame& stabilisers, const BitGraph& device) {
  return TreeElimination(stabilisers, device).run();
}

}  // namespace zelt::braidwerk::internal
