#include "zeltbraidwerk/clifford/search/internal/circuit.h"

#include <array>
#include <cstddef>
#include <utility>

#include "zeltbraidwerk/clifford/internal/elimination.h"

namespace zelt::braidwerk::internal {
namespace {

using Kind = CliffordGate::Kind;

int label_of_letter(unsigned char letter) {
  return (letter_has_x(letter) ? label_x : 0) | (letter_has_z(letter) ? label_z : 0);
}

/// What one-qubit gates one after the other make of the labels of a wire, and back.
class LabelMap {
 public:
  int operator()(int label) const { return to_[static_cast<std::size_t>(label)]; }

  /// One more gate, which leaves a label and exchanges the two others.
  void exchange_others(int kept) {
    for (int& label : to_) {
      if (label != 0 && label != kept) label ^= kept;
    }
  }

  /// One more gate, by what it makes of X and Z.
  void then(int of_x, int of_z) {
    const std::array<int, 4> images{0, of_x, of_z, of_x ^ of_z};
    for (int& label : to_) label = images[static_cast<std::size_t>(label)];
  }

 private:
  std::array<int, 4> to_{0, 1, 2, 3};
};

std::vector<LabelMap> maps_on(int wires) {
  return std::vector<LabelMap>(static_cast<std::size_t>(wires));
}

/// Each gate of a list as a CNOT. One-qubit gates before it bring its labels to Z and X; what it is
/// away from a CNOT after it is not emitted but kept as the label of the circuit that stands for
/// each one of the list.
class Emission {
 public:
  Emission(int wires, std::size_t gates) : maps_(maps_on(wires)) {
    gates_.reserve(gates + gates / 4 + 3 * static_cast<std::size_t>(wires));
  }

  void emit(const Gate& gate) {
    int control = wire_of(gate.a);
    int target = wire_of(gate.b);
    int a = label_now(gate.a);
    int b = label_now(gate.b);
    if ((a != label_z) + (b != label_x) > (a != label_x) + (b != label_z)) {
      std::swap(control, target);
      std::swap(a, b);
    }
    bring(control, a, label_z);
    bring(target, b, label_x);
    gates_.push_back(CliffordGate::cnot(control, target));
    map(control).exchange_others(label_z);
    map(target).exchange_others(label_x);
  }

  /// Brings what stands for an end of the list to a label.
  void bring_end(End end, int to) { bring(wire_of(end), label_now(end), to); }

  std::vector<CliffordGate>& gates() { return gates_; }

 private:
  LabelMap& map(int wire) { return maps_[static_cast<std::size_t>(wire)]; }
  int label_now(End end) { return map(wire_of(end))(label_of(end)); }

  void bring(int wire, int label, int to) {
    if (label == to) return;
    const int kept = label ^ to;
    gates_.push_back({kept == label_x ? Kind::rx_plus : kept == label_z ? Kind::s : Kind::h, wire});
    map(wire).exchange_others(kept);
  }

  std::vector<LabelMap> maps_;
  std::vector<CliffordGate> gates_;
};

/// The way back: what labels a circuit's gates have where those on one wire are left out.
class ListReader {
 public:
  explicit ListReader(int wires) : list_(wires, {}), maps_(maps_on(wires)) {}

  LabelMap& map(int wire) { return maps_[static_cast<std::size_t>(wire)]; }

  void cnot(int control, int target) {
    list_.gates.push_back({end_that_is_now(control, label_z), end_that_is_now(target, label_x)});
    map(control).exchange_others(label_z);
    map(target).exchange_others(label_x);
  }

  GateList list() {
    for (int wire = 0; wire < list_.wires(); ++wire) {
      for (int label = 1; label < 4; ++label) {
        list_.frame[end_of(wire, label)] = end_of(wire, map(wire)(label));
      }
    }
    return std::move(list_);
  }

 private:
  End end_that_is_now(int wire, int label) {
    int before = 1;
    while (before < 3 && map(wire)(before) != label) ++before;
    return end_of(wire, before);
  }

  GateList list_;
  std::vector<LabelMap> maps_;
};

/// Appends the Pauli gates that give the images their signs: the image of Z on a qubit turns the
/// sign of that of X alone, and the other way round.
void mend_signs(CliffordCircuit& circuit, const PauliFrame& images) {
  const int n = images.qubits();
  PauliFrame found = identity_images(n);
  for (const CliffordGate& gate : circuit.gates) found.apply(gate);
  std::vector<int> labels(static_cast<std::size_t>(n));
  for (int r = 0; r < 2 * n; ++r) {
    if (found.is_negative(r) == images.is_negative(r)) continue;
    const int partner = r < n ? r + n : r - n;
    for (int wire = 0; wire < n; ++wire) {
      const unsigned char letter = found.letter(partner, wire);
      labels[static_cast<std::size_t>(wire)] ^= label_of_letter(letter);
    }
  }
  for (int wire = 0; wire < n; ++wire) {
    const int label = labels[static_cast<std::size_t>(wire)];
    if (label == 0) continue;
    circuit.gates.push_back({label == label_x   ? Kind::x
                             : label == label_z ? Kind::z
                                                : Kind::y,
                             wire});
  }
}

}  // namespace

CliffordCircuit emitted(const GateList& list) {
  const int n = list.wires();
  Emission emission(n, list.gates.size());
  for (const Gate& gate : list.gates) emission.emit(gate);
  CliffordCircuit circuit;
  circuit.wires.resize(static_cast<std::size_t>(n));
  for (int wire = 0; wire < n; ++wire) {
    for (const int label : {label_x, label_z}) {
      const End end = end_of(wire, label);
      emission.bring_end(end, label_of(list.frame[end]));
    }
    const End from = list.frame[end_of(wire, label_x)];
    circuit.wires[static_cast<std::size_t>(wire_of(from))] = wire;
  }
  circuit.gates = std::move(emission.gates());
  circuit.size = size_of(list);
  return circuit;
}

CliffordCircuit to_circuit(const GateList& list, const PauliFrame& images) {
  CliffordCircuit circuit = emitted(list);
  mend_signs(circuit, images);
  return circuit;
}

GateList to_list(const std::vector<structures::Gate>& circuit, int wires) {
  ListReader reader(wires);
  PauliFrame images;
  for (const structures::Gate& gate : circuit) {
    const int q = gate.qbits[0];
    if (gate.name == "CNOT") {
      reader.cnot(q, gate.qbits[1]);
      continue;
    }
    images = identity_images(1);
    images.apply(structures::Gate(gate.name, {0}, gate.params, gate.diag));
    reader.map(q).then(label_of_letter(images.letter(0, 0)), label_of_letter(images.letter(1, 0)));
  }
  return reader.list();
}

GateList to_list(const std::vector<CliffordGate>& circuit, int wires) {
  ListReader reader(wires);
  for (const CliffordGate& gate : circuit) {
    switch (gate.kind) {
      case Kind::cnot:
        reader.cnot(gate.a, gate.b);
        break;
      case Kind::h:
        reader.map(gate.a).exchange_others(label_y);
        break;
      case Kind::s:
      case Kind::s_dagger:
        reader.map(gate.a).exchange_others(label_z);
        break;
      case Kind::rx_plus:
      case Kind::rx_minus:
        reader.map(gate.a).exchange_others(label_x);
        break;
      default:
        break;  // signs are left out
    }
  }
  return reader.list();
}

}  // namespace zelt::braidwerk::internal
