#include "zeltbraidwerk/pauli/search/internal/network_circuit.h"

#include <cassert>
#include <cmath>

#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/foundations/internal/turns.h"
#include "zeltbraidwerk/pauli/search/internal/network_emission.h"

namespace zelt::braidwerk::internal {
namespace {

/// Writes gates; rotations have the angles of their rows.
class GateWriter {
 public:
  GateWriter(const Rotations& rotations, PauliFrame& images)
      : rotations_(rotations), images_(images) {}

  static constexpr bool allows_cz = false;
  void cnot(int control, int target) { append(structures::Gate::CNOT(control, target)); }
  void cz(int a, int b) { append(structures::Gate::CZ(a, b)); }
  void change(int label, int q) {
    append(label == label_x   ? structures::Gate::RXP(q)
           : label == label_z ? structures::Gate::S(q)
                              : structures::Gate::H(q));
  }
  void rotate(int row, int label, int q, bool negative) {
    const structures::Parameter& angle = rotations_.params[static_cast<std::size_t>(row)];
    circuit.push_back(
        rotation_gate(letter_of_label(label), q, negative ? angle.flip_sign() : angle, "RZ"));
  }

  std::vector<structures::Gate> circuit;

 private:
  void append(structures::Gate gate) {
    images_.apply(gate);
    circuit.push_back(std::move(gate));
  }

  const Rotations& rotations_;
  PauliFrame& images_;
};

bool is_odd_turn(const structures::Gate& gate) {
  return (std::lround(gate.params[0].value / quarter_turn) & 1) != 0;
}

}  // namespace

std::vector<structures::Gate> circuit_of(const Network& network, const Rotations& rotations,
                                         const NetworkTask& task, bool closes) {
  PauliFrame images =
      task.target == nullptr ? identity_images(rotations.frame.qubits()) : task.target->preimages;
  GateWriter writer(rotations, images);
  NetworkEmission(rotations.frame, writer).run(network.events);
  if (!closes) return std::move(writer.circuit);
  // What is left to undo is on single wires.
  for (const CliffordGate& gate : eliminate_clifford(std::move(images), false).gates) {
    writer.circuit.push_back(to_gate(gate));
  }
  return std::move(writer.circuit);
}

CliffordTarget target_of(PauliFrame images) {
  CliffordTarget target{identity_images(images.qubits()), {}};
  // What undoes the operator is a circuit of its inverse.
  Elimination undoing = eliminate_clifford(std::move(images), true);
  undoing.close();
  for (const CliffordGate& gate : undoing.gates) target.preimages.apply(gate);
  target.gates = to_gates(inverted(undoing.gates));
  return target;
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
