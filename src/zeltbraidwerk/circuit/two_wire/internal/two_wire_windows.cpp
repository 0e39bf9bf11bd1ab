#include "zeltbraidwerk/circuit/two_wire/internal/two_wire_windows.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "zeltbraidwerk/circuit/two_wire/internal/block.h"
#include "zeltbraidwerk/foundations/internal/control.h"

namespace zelt::braidwerk::internal {

namespace {

using structures::Gate;
constexpr int no_wire = -1;
constexpr int most_passed = 32;  // items on a wire that a gate may pass; keeps the time linear
constexpr int most_above = 8;    // blocks above each other that dissolve from the top down
constexpr unsigned all_axes = 7;

/// What stands on one or two wires: gates to be replaced together, or one gate that stays.
struct Item {
  std::array<int, 2> wires{no_wire, no_wire};
  bool fixed = false;     ///< a gate that is left alone, on any number of wires
  bool fused = false;     ///< no gate was added since fuse() put its one-wire gates together
  bool examined = false;  ///< no gate was added since dissolve() left it as it is
  bool settled = false;   ///< nor since settle() replaced or left it
  bool gone = false;
  int two_wire = 0;
  std::vector<std::size_t> gates;  ///< numbers, in time order
  /// By place: the Pauli operators (bits 0 to 2) that commute with all of the gates.
  std::array<unsigned, 2> axes{all_axes, all_axes};

  bool on(int a, int b) const { return wires == std::array{a, b} || wires == std::array{b, a}; }
  std::size_t place(int wire) const { return wire == wires[1] ? 1 : 0; }
};

/// Gates by number, the named ones and what is known of them.
class GateTable {
 public:
  explicit GateTable(const std::vector<Gate>& gates) {
    for (const Gate& gate : gates) add(gate);
  }
  void add(const Gate& gate) {
    gates_.push_back(gate);
    const std::optional<PlaceGate> placed = place_gate(gate);
    placed_.push_back(placed.value_or(PlaceGate{}));
    fixed_.push_back(!placed);
  }
  std::size_t size() const { return gates_.size(); }
  const Gate& operator[](std::size_t number) const { return gates_[number]; }
  /// Whether the gate is left alone.
  bool fixed(std::size_t number) const { return fixed_[number]; }
  /// Of a gate that is not: with its first wire at place 0.
  const PlaceGate& placed(std::size_t number) const { return placed_[number]; }

 private:
  std::vector<Gate> gates_;
  std::vector<PlaceGate> placed_;
  std::vector<bool> fixed_;
};

/// One pass over a circuit. Each wire has its items in time order; a gate goes to the last item of
/// its wires where that is the same, or where it commutes with what was added since.
class Pass {
 public:
  Pass(WindowResult& result, std::vector<std::size_t> order, GateTable& gates,
       const WindowOptions& options)
      : result_(result), order_(std::move(order)), gates_(gates), options_(options) {
    int wires = 0;
    for (const std::size_t number : order_) {
      for (const int wire : gates_[number].qbits) wires = std::max(wires, wire + 1);
    }
    on_wire_.resize(static_cast<std::size_t>(wires));
  }

  /// The numbers of the circuit's gates afterwards.
  std::vector<std::size_t> run() {
    for (const std::size_t number : order_) {
      stop_point();
      add(number);
    }
    // What dissolves adds to earlier items, and to new ones, which are at the end.
    for (std::size_t k = items_.size(); k-- > 0;) settle(static_cast<int>(k));
    for (std::size_t k = 0; k < items_.size(); ++k) settle(static_cast<int>(k));
    std::vector<std::size_t> order;
    for (const Item& item : items_) {
      if (!item.gone) order.insert(order.end(), item.gates.begin(), item.gates.end());
    }
    return order;
  }

 private:
  Item& item(int index) { return items_[static_cast<std::size_t>(index)]; }
  std::vector<int>& stack(int wire) { return on_wire_[static_cast<std::size_t>(wire)]; }
  int last(int wire) { return stack(wire).empty() ? -1 : stack(wire).back(); }

  void add(std::size_t number) {
    if (gates_.fixed(number)) {
      add_fixed(number);
    } else if (const PlaceGate gate = gates_.placed(number); gate.two_wire()) {
      add_two_wire(number, gate);
    } else {
      add_one_wire(number, gate);
    }
  }

  void add_fixed(std::size_t number) {
    const Gate& gate = gates_[number];
    const auto index = static_cast<int>(items_.size());
    Item& fixed = items_.emplace_back();
    fixed.fixed = true;
    fixed.gates = {number};
    fixed.wires[0] = gate.qbits.empty() ? no_wire : gate.qbits[0];
    fixed.axes = {0, 0};
    if (gate.qbits.size() == 1 && gate.params.size() == 1) {
      // A rotation by a symbol commutes with what any rotation about its axis does.
      const auto like =
          place_gate(Gate(gate.name, gate.qbits, {structures::Parameter(1.0)}, false));
      if (like) fixed.axes[0] = commuting_axes(*like, 0);
    }
    for (const int wire : gate.qbits) stack(wire).push_back(index);
  }

  void add_one_wire(std::size_t number, const PlaceGate& gate) {
    const int wire = gates_[number].qbits[0];
    if (last(wire) < 0 || item(last(wire)).fixed) {
      stack(wire).push_back(static_cast<int>(items_.size()));
      items_.emplace_back().wires[0] = wire;
    }
    append(last(wire), number, gate);
  }

  void add_two_wire(std::size_t number, const PlaceGate& gate) {
    const int a = gates_[number].qbits[0];
    const int b = gates_[number].qbits[1];
    while (true) {
      const int index = reached_by(gate, a, b);
      if (index >= 0) {
        if (last(a) != index || last(b) != index) log_move(index, number);
        append(index, number, gate);
        return;
      }
      if (!fuse(last(a)) && !fuse(last(b)) && !dissolve(last(a)) && !dissolve(last(b))) break;
    }
    const auto index = static_cast<int>(items_.size());
    items_.emplace_back().wires = {std::min(a, b), std::max(a, b)};
    for (const int wire : std::array(items_.back().wires)) {
      take_in(wire, index);
      stack(wire).push_back(index);
    }
    append(index, number, gate);
  }

  /// The last block on the gate's wires, if the gate can pass what came after it, or -1.
  int reached_by(const PlaceGate& gate, int a, int b) {
    const int on_a = reached_on(a, a, b, commuting_axes(gate, 0));
    return on_a >= 0 && reached_on(b, a, b, commuting_axes(gate, 1)) == on_a ? on_a : -1;
  }
  int reached_on(int wire, int a, int b, unsigned axes) {
    const std::vector<int>& items = stack(wire);
    const std::size_t end = items.size() - std::min<std::size_t>(items.size(), most_passed);
    for (std::size_t k = items.size(); k-- > end;) {
      const Item& passed = item(items[k]);
      if (!passed.fixed && passed.on(a, b)) return passed.two_wire > 0 ? items[k] : -1;
      if ((passed.axes[passed.place(wire)] & axes) != axes) break;
    }
    return -1;
  }

  /// A new block takes in the one-wire gates before it.
  void take_in(int wire, int index) {
    const int before = last(wire);
    if (before < 0 || item(before).fixed || item(before).wires[1] != no_wire) return;
    item(before).gone = true;
    stack(wire).pop_back();
    for (const std::size_t number : item(before).gates) {
      append(index, number, gates_.placed(number));
    }
  }

  void append(int index, std::size_t number, const PlaceGate& gate) {
    Item& to = item(index);
    to.gates.push_back(number);
    to.fused = to.examined = to.settled = false;
    to.two_wire += gate.two_wire() ? 1 : 0;
    const std::vector<int>& wires = gates_[number].qbits;
    for (std::size_t k = 0; k < wires.size(); ++k) {
      to.axes[to.place(wires[k])] &= commuting_axes(gate, static_cast<int>(k));
    }
  }

  /// Puts the one-wire gates of a block together, which may let more gates pass. Returns whether
  /// there are fewer now.
  bool fuse(int index) {
    if (index < 0 || item(index).fused || item(index).gone || item(index).two_wire == 0)
      return false;
    const bool changed = replace(index, fused_block(block_of(index)));
    item(index).fused = true;
    return changed;
  }

  /// Takes a block apart that needs no two-wire gates. While gates come in, other blocks stay as
  /// they are, since the gates of a replacement let fewer others pass.
  /// Those above it on its wires go first. Returns whether any did.
  bool dissolve(int index, int depth = most_above) {
    if (index < 0 || depth == 0 || item(index).examined || item(index).gone ||
        item(index).two_wire < 2) {
      return false;
    }
    const auto [a, b] = item(index).wires;
    bool changed = false;
    for (const int wire : {a, b}) {
      while (last(wire) != index && dissolve(last(wire), depth - 1)) changed = true;
    }
    if (last(a) != index || last(b) != index) return changed;
    item(index).examined = true;
    const std::vector<PlaceGate> block = block_of(index);
    if (cnots_needed(matrix_of(block)) > 0) return changed;
    replace(index, better_block(block, options_.keep_rotations));
    return take_apart(index) || changed;
  }

  /// Replaces the gates of an item by better ones.
  void settle(int index) {
    stop_point();
    if (item(index).settled || item(index).gone || item(index).fixed) return;
    const bool had_two_wire = item(index).two_wire > 0;
    replace(index, better_block(block_of(index), options_.keep_rotations));
    item(index).settled = true;
    if (had_two_wire) take_apart(index);
  }

  /// Hands one-wire gates over to the items before, if no two-wire gate is left and the block is
  /// the last on both wires.
  bool take_apart(int index) {
    const auto [a, b] = item(index).wires;
    if (item(index).two_wire > 0 || last(a) != index || last(b) != index) return false;
    item(index).gone = true;
    for (const int wire : {a, b}) stack(wire).pop_back();
    for (const std::size_t number : std::vector(item(index).gates)) {
      add_one_wire(number, gates_.placed(number));
    }
    return true;
  }

  /// The gates of an item on its places.
  std::vector<PlaceGate> block_of(int index) {
    std::vector<PlaceGate> block;
    for (const std::size_t number : item(index).gates) {
      PlaceGate gate = gates_.placed(number);
      gate.place = static_cast<std::uint8_t>(item(index).place(gates_[number].qbits[0]));
      block.push_back(gate);
    }
    return block;
  }

  bool replace(int index, const std::optional<TwoWireCircuit>& better) {
    if (!better) return false;
    const std::array<int, 2> wires = item(index).wires;
    WindowStep& step = result_.log.emplace_back();
    step.wires = {wires[0], wires[1], no_wire};
    step.before = std::move(item(index).gates);
    step.phase = better->phase;
    result_.phase += better->phase;
    item(index).gates.clear();
    item(index).axes = {all_axes, all_axes};
    item(index).two_wire = 0;
    for (const PlaceGate& gate : better->gates) {
      step.after.push_back(named_gate(gate, wires[0], wires[1]));
      gates_.add(step.after.back());
      append(index, gates_.size() - 1, gates_.placed(gates_.size() - 1));
    }
    return true;
  }

  void log_move(int index, std::size_t number) {
    WindowStep& step = result_.log.emplace_back();
    step.kind = WindowStep::Kind::move;
    for (std::size_t k = 0; k < 2; ++k) {
      const int wire = gates_[number].qbits[k];
      step.wires[k] = wire;
      const auto& numbers = item(index).gates;
      step.before.push_back(*std::find_if(numbers.rbegin(), numbers.rend(), [&](std::size_t other) {
        return std::ranges::count(gates_[other].qbits, wire) > 0;
      }));
    }
    step.before.push_back(number);
  }

  WindowResult& result_;
  std::vector<std::size_t> order_;
  GateTable& gates_;
  WindowOptions options_;
  std::vector<Item> items_;                // in an order of time
  std::vector<std::vector<int>> on_wire_;  // by wire: its items in time order
};

}  // namespace

WindowResult two_wire_windows(const std::vector<Gate>& circuit, const WindowOptions& options) {
  WindowResult result;
  GateTable gates(circuit);
  std::vector<std::size_t> order(circuit.size());
  for (std::size_t k = 0; k < order.size(); ++k) order[k] = k;
  // A pass may bring gates together that the next one replaces.
  for (std::size_t steps = 1; steps != 0;) {
    steps = result.log.size();
    order = Pass(result, std::move(order), gates, options).run();
    steps = result.log.size() - steps;
  }
  for (const std::size_t number : order) result.circuit.push_back(gates[number]);
  return result;
}

}  // namespace zelt::braidwerk::internal
