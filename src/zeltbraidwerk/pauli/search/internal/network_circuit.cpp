#include "zeltbraidwerk/pauli/search/internal/network_circuit.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>

#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/foundations/internal/turns.h"

namespace zelt::braidwerk::internal {
namespace {

/// What has become of the labels of each wire through gates on that wire alone.
class WireLabels {
 public:
  explicit WireLabels(int qubits)
      : now_(static_cast<std::size_t>(qubits), {0, label_x, label_z, label_y}) {}

  int now(End end) const {
    return now_[static_cast<std::size_t>(wire_of(end))][static_cast<std::size_t>(label_of(end))];
  }
  /// The label that has become `label`.
  End origin(int q, int label) const {
    const auto& now = now_[static_cast<std::size_t>(q)];
    return end_of(q, static_cast<int>(std::ranges::find(now, label) - now.begin()));
  }
  void exchange(int q, int one, int other) {
    for (int& label : now_[static_cast<std::size_t>(q)]) {
      label = label == one ? other : label == other ? one : label;
    }
  }

 private:
  std::vector<std::array<int, 4>> now_;
};

class Emitter {
 public:
  Emitter(Rotations rotations, PauliFrame& images)
      : rotations_(std::move(rotations)), images_(images), labels_(rotations_.frame.qubits()) {}

  std::vector<structures::Gate> run(const std::vector<NetworkEvent>& events) {
    for (const NetworkEvent& event : events) {
      if (event.row < 0) {
        play(event.gate);
      } else {
        rotate(event.row, wire_of(event.gate.a));
      }
    }
    return std::move(circuit_);
  }

 private:
  void rotate(int row, int q) {
    assert(lone_qubit(rotations_.frame, row) == q);
    circuit_.push_back(rotation_gate(rotations_.frame, row, q,
                                     rotations_.params[static_cast<std::size_t>(row)], "RZ"));
  }

  /// In the direction that needs fewer changes of basis.
  void play(const internal::Gate& gate) {
    const int changes = (labels_.now(gate.a) != label_z) + (labels_.now(gate.b) != label_x);
    const int other = (labels_.now(gate.b) != label_z) + (labels_.now(gate.a) != label_x);
    const auto [control, target] =
        changes <= other ? std::pair(gate.a, gate.b) : std::pair(gate.b, gate.a);
    bring(control, label_z);
    bring(target, label_x);
    append(structures::Gate::CNOT(wire_of(control), wire_of(target)));
  }

  void bring(End end, int label) {
    const int now = labels_.now(end);
    if (now == label) return;
    const int q = wire_of(end);
    const int kept = label_x ^ label_z ^ label_y ^ now ^ label;
    labels_.exchange(q, now, label);
    append(kept == label_x   ? structures::Gate::RXP(q)
           : kept == label_z ? structures::Gate::S(q)
                             : structures::Gate::H(q));
  }

  void append(structures::Gate gate) {
    rotations_.frame.apply(gate);
    images_.apply(gate);
    circuit_.push_back(std::move(gate));
  }

  Rotations rotations_;
  PauliFrame& images_;
  WireLabels labels_;
  std::vector<structures::Gate> circuit_;
};

bool is_odd_turn(const structures::Gate& gate) {
  return (std::lround(gate.params[0].value / quarter_turn) & 1) != 0;
}

}  // namespace

std::vector<structures::Gate> circuit_of(const Network& network, const Rotations& rotations,
                                         bool closes) {
  PauliFrame images = identity_images(rotations.frame.qubits());
  std::vector<structures::Gate> circuit = Emitter(rotations, images).run(network.events);
  if (!closes) return circuit;
  // What is left to undo is on single wires.
  for (structures::Gate& gate : eliminate_clifford(std::move(images), false).gates) {
    circuit.push_back(std::move(gate));
  }
  return circuit;
}

std::vector<Gate> labelled(const std::vector<structures::Gate>& circuit, int qubits) {
  WireLabels labels(qubits);
  std::vector<Gate> gates;
  for (const structures::Gate& gate : circuit) {
    const int q = gate.qbits[0];
    if (gate.qbits.size() == 2) {
      assert(gate.name == "CNOT");
      gates.push_back({labels.origin(q, label_z), labels.origin(gate.qbits[1], label_x)});
    } else if (gate.name == "H") {
      labels.exchange(q, label_x, label_z);
    } else if (gate.name == "S" || gate.name == "D-S" || (gate.name == "RZ" && is_odd_turn(gate))) {
      labels.exchange(q, label_x, label_y);
    } else if (gate.name == "RX" && is_odd_turn(gate)) {
      labels.exchange(q, label_z, label_y);
    } else if (gate.name == "RY" && is_odd_turn(gate)) {
      labels.exchange(q, label_x, label_z);
    }
  }
  return gates;
}

}  // namespace zelt::braidwerk::internal
