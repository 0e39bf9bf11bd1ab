#include "zeltbraidwerk/circuit/three_wire/internal/three_wire_windows.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <optional>
#include <utility>

#include "zeltbraidwerk/circuit/three_wire/internal/three_wire.h"

namespace zelt::braidwerk::internal {

namespace {

using structures::Gate;
constexpr std::size_t most_wires_of_block = 3;

struct Block {
  std::vector<int> wires;
  std::vector<std::size_t> gates;  ///< numbers, in time order
  int two_wire = 0;
  bool fixed = false;  ///< one gate that is left alone, on any number of wires
};

std::vector<int> united(std::vector<int> wires, const std::vector<int>& more) {
  for (const int wire : more) {
    if (std::ranges::find(wires, wire) == wires.end()) wires.push_back(wire);
  }
  return wires;
}

/// Puts the gates of a circuit into blocks, in an order in which these may act one after the other.
/// A block that is the last on all its wires has none after it, so it can be moved to the end and
/// take in others.
class Gathering {
 public:
  explicit Gathering(const std::vector<Gate>& circuit) : circuit_(circuit) {
    int wires = 0;
    for (const Gate& gate : circuit) {
      for (const int wire : gate.qbits) wires = std::max(wires, wire + 1);
    }
    last_.resize(static_cast<std::size_t>(wires), -1);
    for (std::size_t number = 0; number < circuit.size(); ++number) add(number);
  }

  std::vector<Block> blocks() && { return std::move(blocks_); }

 private:
  int& last(int wire) { return last_[static_cast<std::size_t>(wire)]; }
  Block& block(int index) { return blocks_[static_cast<std::size_t>(index)]; }

  void add(std::size_t number) {
    const Gate& gate = circuit_[number];
    if (!place_gate(gate)) {
      add_block({gate.qbits, {number}, 0, true});
      return;
    }
    const bool is_pair = gate.qbits.size() == 2;
    Block& to = block(is_pair ? block_of_two(gate.qbits) : block_of_one(gate.qbits[0]));
    to.gates.push_back(number);
    to.two_wire += is_pair ? 1 : 0;
  }

  int add_block(Block made) {
    const auto index = static_cast<int>(blocks_.size());
    for (const int wire : made.wires) last(wire) = index;
    blocks_.push_back(std::move(made));
    return index;
  }

  int block_of_one(int wire) {
    if (const int index = last(wire); index >= 0 && !block(index).fixed) return index;
    return add_block({{wire}, {}});
  }

  int block_of_two(const std::vector<int>& pair) {
    const int first = last(pair[0]);
    const int second = last(pair[1]);
    if (first == second && first >= 0 && !block(first).fixed) return first;
    const bool first_larger =
        first >= 0 && (second < 0 || block(first).two_wire >= block(second).two_wire);
    const int larger = first_larger ? first : second;
    const int smaller = first_larger ? second : first;
    for (const std::initializer_list<int> taken :
         {std::initializer_list<int>{larger, smaller}, {larger}, {smaller}}) {
      if (const auto made = joined(pair, taken)) return *made;
    }
    return add_block({pair, {}});
  }

  /// A block on these wires that takes in others, if they can be moved to the end and it has no
  /// more than three wires.
  std::optional<int> joined(std::vector<int> wires, std::initializer_list<int> taken) {
    for (const int index : taken) {
      if (index < 0 || block(index).fixed) return std::nullopt;
      const std::vector<int>& own = block(index).wires;
      if (!std::ranges::all_of(own, [&](int wire) { return last(wire) == index; })) {
        return std::nullopt;
      }
      wires = united(std::move(wires), own);
    }
    if (wires.size() > most_wires_of_block) return std::nullopt;
    Block made{std::move(wires), {}};
    for (const int index : taken) {
      Block& part = block(index);
      if (part.gates.size() > made.gates.size()) std::swap(part.gates, made.gates);
      made.gates.insert(made.gates.end(), part.gates.begin(), part.gates.end());
      made.two_wire += part.two_wire;
      part = Block{};
    }
    return add_block(std::move(made));
  }

  const std::vector<Gate>& circuit_;
  std::vector<Block> blocks_;
  std::vector<int> last_;  // by wire: its last block
};

/// Whether no other gates can lead from the end of a block to its beginning: the last gate on each
/// of three wires comes after the first one on each.
bool holds_together(const std::vector<Gate>& gates) {
  std::array<unsigned, most_wires_of_block> after{};  // by wire: whose first gates are before
  for (const Gate& gate : gates) {
    unsigned all = 0;
    for (const int wire : gate.qbits) all |= after[static_cast<std::size_t>(wire)] | (1U << wire);
    for (const int wire : gate.qbits) after[static_cast<std::size_t>(wire)] = all;
  }
  return std::ranges::all_of(after, [](unsigned wires) { return wires == 7; });
}

bool joined_on(const BitGraph* device, const std::vector<int>& wires) {
  return device == nullptr ||
         (device->joined(wires[0], wires[1]) && device->joined(wires[0], wires[2]) &&
          device->joined(wires[1], wires[2]));
}

class Replacing {
 public:
  Replacing(const std::vector<Gate>& circuit, const ThreeWireOptions& options)
      : circuit_(circuit), options_(options) {}

  WindowResult run() {
    for (const Block& block : Gathering(circuit_).blocks()) add(block);
    if (result_.log.empty()) result_.circuit = circuit_;
    return std::move(result_);
  }

 private:
  void add(const Block& block) {
    auto better = better_block(block);
    if (!better) {
      for (const std::size_t number : block.gates) result_.circuit.push_back(circuit_[number]);
      return;
    }
    WindowStep& step = result_.log.emplace_back();
    std::ranges::copy(block.wires, step.wires.begin());
    step.before = block.gates;
    step.phase = better->phase;
    result_.phase += better->phase;
    for (Gate& gate : better->gates) {
      for (int& wire : gate.qbits) wire = block.wires[static_cast<std::size_t>(wire)];
    }
    step.after = std::move(better->gates);
    result_.circuit.insert(result_.circuit.end(), step.after.begin(), step.after.end());
  }

  std::optional<ThreeWireCircuit> better_block(const Block& block) const {
    if (block.fixed || block.wires.size() < most_wires_of_block ||
        block.two_wire < options_.least_two_wire || !joined_on(options_.device, block.wires) ||
        (options_.ended && options_.ended())) {
      return std::nullopt;
    }
    std::vector<Gate> gates;
    GateCounts counts;
    for (const std::size_t number : block.gates) {
      Gate& gate = gates.emplace_back(circuit_[number]);
      for (int& wire : gate.qbits) {
        wire = static_cast<int>(std::ranges::find(block.wires, wire) - block.wires.begin());
      }
      counts.add(place_gate(gate).value_or(PlaceGate{}));
    }
    if (!holds_together(gates)) return std::nullopt;
    return three_wire_circuit(operator_of(gates), counts, options_.keep_rotations);
  }

  const std::vector<Gate>& circuit_;
  const ThreeWireOptions& options_;
  WindowResult result_;
};

}  // namespace

WindowResult three_wire_windows(const std::vector<Gate>& circuit, const ThreeWireOptions& options) {
  return Replacing(circuit, options).run();
}

}  // namespace zelt::braidwerk::internal
