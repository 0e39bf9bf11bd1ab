#pragma once

#include <algorithm>
#include <limits>
#include <span>
#include <tuple>
#include <vector>

#include "zeltbraidwerk/foundations/cnot_circuit.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/graphs/internal/steiner_tree.h"
#include "zeltbraidwerk/routing/internal/frame_axes.h"
#include "zeltbraidwerk/routing/internal/waiting.h"

namespace zelt::braidwerk::internal {

enum class FanInCost {
  cnots,
  depth,
  told_depth,  ///< depth, with the text of structures::cnot_depth for each fan-in looked at
};

/// How one rotation is emitted.
struct Gadget {
  int row = -1;
  bool flip = false;
  int root = -1;  ///< -1 for an identity string
  std::vector<int> support;
  std::vector<BasisChange> basis;
  std::vector<Cnot> fan;

  std::vector<structures::Gate> gates() const {
    std::vector<structures::Gate> gates;
    for (const auto& [q, is_y] : basis) {
      gates.push_back(is_y ? structures::Gate::RXP(q) : structures::Gate::H(q));
    }
    for (const Cnot& c : fan) gates.push_back(structures::Gate::CNOT(c.control, c.target));
    return gates;
  }
};

/// Chooses the next rotation and the qubit that it lands on. Axes is FrameAxes, or what reads the
/// rotations in another way. Trees is CachedTrees or DeviceTrees; where Trees::may_skip is set,
/// rotations and plans that cannot be the cheapest are not looked at.
template <class Axes, class Trees>
class GadgetSearch {
 public:
  GadgetSearch(Waiting& waiting, Trees& trees, FanInCost objective, const Control& control)
      : waiting_(waiting), trees_(trees), objective_(objective), control_(control) {}

  /// The cost of the cheapest plan for this block's rotations and the `depth` that follow the
  /// first, written to `plan` on demand. A cost of `bound` or more may come out as any such number.
  /// When the control says stop the result means nothing; stopped() tells.
  int best(int block, Axes axes, int depth, Gadget* plan, int bound = unbounded) {
    if (waiting_.is_empty(block) || stopped()) return 0;
    auto [chosen, tree] = choose(block, axes);
    axes.apply(chosen.basis);
    std::vector<Cnot> fill;
    fill_for_fan_in(tree.edges, chosen.support, fill);
    if (depth > 0) axes.apply(fill);
    waiting_.take(block, chosen.row);
    const int all_cnots =
        fan_in_cnots(tree.vertices.members(), static_cast<int>(chosen.support.size()));
    int least = chosen.support.empty() ? 0 : bound;
    for (const int root : chosen.support) {
      if (stopped_) break;  // the plan is thrown away
      chosen.fan = fill;
      empty_for_fan_in(tree.edges, root, chosen.fan);
      int cost = cost_of(chosen.fan);
      if (depth > 0 && (cost < least || !may_skip())) {
        Axes next = axes;
        next.apply(std::span(chosen.fan).subspan(fill.size()));
        cost += best(waiting_.is_empty(block) ? block + 1 : block, std::move(next), depth - 1,
                     nullptr, may_skip() ? least - cost : unbounded);
      }
      if (cost < least) {
        least = cost;
        chosen.root = root;
        if (plan != nullptr) *plan = chosen;
      }
      // All roots of a tree that joins its terminals take the same number of CNOTs.
      if (depth < 1 && objective_ == FanInCost::cnots && cost == all_cnots) break;
    }
    waiting_.give_back(block, chosen.row);
    if (plan != nullptr && chosen.support.empty()) *plan = chosen;
    return least;
  }

  bool stopped() const { return stopped_; }
  bool stop_requested() { return stopped_ = stopped_ || control_.stop_requested(); }

 private:
  static constexpr int unbounded = std::numeric_limits<int>::max();

  bool may_skip() const { return Trees::may_skip && objective_ != FanInCost::told_depth; }

  /// The rotation of the cheapest tree; ties: the first.
  std::pair<Gadget, SteinerTree> choose(int block, Axes& axes) {
    stop_requested();
    const std::vector<int> rows = waiting_.rows(block);
    axes.read(rows);
    std::pair<Gadget, SteinerTree> chosen;
    Gadget& gadget = chosen.first;
    gadget.row = Trees::may_skip ? cheapest_of_light(axes, rows) : cheapest(axes, rows);
    support(axes, gadget.row).for_each([&](int q) { gadget.support.push_back(q); });
    chosen.second = trees_.tree(gadget.support);
    gadget.flip = axes.is_negative(gadget.row);
    for (const int q : gadget.support) {
      if (axes.has_x(gadget.row, q)) gadget.basis.push_back({q, axes.is_y(gadget.row, q)});
    }
    return chosen;
  }

  int cheapest(const Axes& axes, const std::vector<int>& rows) {
    int least = unbounded;
    int chosen = -1;
    for (const int row : rows) {
      const int cost = trees_.fan_in_cost(support(axes, row), unbounded);
      if (cost >= least) continue;
      least = cost;
      chosen = row;
    }
    return chosen;
  }

  /// The same row. A tree on w terminals costs w - 1 or more, so that light rows go first and most
  /// others need no tree.
  int cheapest_of_light(const Axes& axes, const std::vector<int>& rows) {
    std::vector<std::pair<int, int>> by_weight;  // and row
    for (const int row : rows) {
      by_weight.emplace_back(weight(axes.support(row), words_for(axes.qubits())), row);
    }
    std::sort(by_weight.begin(), by_weight.end());
    int least = unbounded;
    int chosen = -1;
    for (const auto& [weight, row] : by_weight) {
      if (chosen >= 0 && weight - 1 > least) break;
      const int limit = chosen > row ? least : least - 1;
      if (chosen >= 0 && weight - 1 > limit) continue;
      const int cost = trees_.fan_in_cost(support(axes, row), limit);
      if (chosen >= 0 && cost > limit) continue;
      least = cost;
      chosen = row;
    }
    return chosen;
  }

  VertexSet support(const Axes& axes, int row) const {
    VertexSet set(trees_.size());
    for_each_bit(axes.support(row), words_for(axes.qubits()), [&](int q) {
      if (q < set.size()) set.insert(q);
    });
    return set;
  }

  int cost_of(const std::vector<Cnot>& fan) const {
    if (objective_ == FanInCost::cnots) return static_cast<int>(fan.size());
    if (objective_ == FanInCost::told_depth) return structures::cnot_depth(to_gates(fan));
    structures::CnotCircuit circuit(trees_.size());
    for (const Cnot& c : fan) circuit.addGate(c.control, c.target);
    return circuit.depth();
  }

  Waiting& waiting_;
  Trees& trees_;
  FanInCost objective_;
  const Control& control_;
  bool stopped_ = false;
};

/// Emits all waiting rotations; `emit` takes each Gadget in turn. False when the control said stop.
template <class Axes, class Trees, class Emit>
bool route_on_device(Axes& axes, Waiting& waiting, Trees& trees, FanInCost objective, int depth,
                     const Control& control, Emit&& emit) {
  GadgetSearch<Axes, Trees> search(waiting, trees, objective, control);
  for (int b = 0; b < waiting.blocks(); ++b) {
    while (!waiting.is_empty(b)) {
      Gadget gadget;
      search.best(b, axes.window(waiting.first_row(b), waiting.end_of_window(b, depth)), depth,
                  &gadget);
      if (search.stop_requested()) return false;
      axes.apply(gadget.basis);
      axes.apply(gadget.fan);
      waiting.take(b, gadget.row);
      emit(gadget);
    }
  }
  return true;
}

}  // namespace zelt::braidwerk::internal
