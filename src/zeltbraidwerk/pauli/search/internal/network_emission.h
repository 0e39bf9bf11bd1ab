#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/foundations/internal/preimages.h"
#include "zeltbraidwerk/pauli/search/internal/network.h"

namespace zelt::braidwerk::internal {

/// The code of a Pauli string's letter that has a label.
constexpr unsigned char letter_of_label(int label) {
  return letter_of((label & label_x) != 0, (label & label_z) != 0);
}

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
  /// A gate on one wire that keeps a label and exchanges the others.
  void exchange_others(int q, int kept) { exchange(q, kept % 3 + 1, (kept + 1) % 3 + 1); }

 private:
  std::vector<std::array<int, 4>> now_;
};

/// Tells the gates of a network one by one:
///   sink.cnot(control, target)
///   sink.cz(a, b)           where sink.allows_cz
///   sink.change(label, q)   the gate that keeps a label and exchanges the others: RX by pi/2 for
///                           label_x, S for label_z, H for label_y
///   sink.rotate(row, label, q, negative)   backward where negative
/// Row r stands for the rotation about string r of `rows`, sign included.
template <class Sink>
class NetworkEmission {
 public:
  NetworkEmission(const PauliFrame& rows, Sink& sink)
      : rows_(rows), sink_(sink), labels_(rows.qubits()), before_(rows.qubits()) {}

  void run(const std::vector<NetworkEvent>& events) {
    for (const NetworkEvent& event : events) {
      event.row < 0 ? play(event.gate) : rotate(event.row, event.gate.a);
    }
  }

 private:
  void rotate(int row, End end) {
    const int label = labels_.now(end);
    const int q = wire_of(end);
    const bool negative = before_.is_negative(letter_of_label(label), q);
    sink_.rotate(row, label, q, negative != rows_.is_negative(row));
  }

  /// In the direction that needs fewer changes of basis.
  void play(const Gate& gate) {
    const int changes = (labels_.now(gate.a) != label_z) + (labels_.now(gate.b) != label_x);
    const int other = (labels_.now(gate.b) != label_z) + (labels_.now(gate.a) != label_x);
    const int for_cz = (labels_.now(gate.a) != label_z) + (labels_.now(gate.b) != label_z);
    if (sink_.allows_cz && for_cz < std::min(changes, other)) {
      bring(gate.a, label_z);
      bring(gate.b, label_z);
      before_.cz(wire_of(gate.a), wire_of(gate.b));
      sink_.cz(wire_of(gate.a), wire_of(gate.b));
      return;
    }
    const auto [control, target] =
        changes <= other ? std::pair(gate.a, gate.b) : std::pair(gate.b, gate.a);
    bring(control, label_z);
    bring(target, label_x);
    before_.cnot(wire_of(control), wire_of(target));
    sink_.cnot(wire_of(control), wire_of(target));
  }

  void bring(End end, int label) {
    const int now = labels_.now(end);
    if (now == label) return;
    const int q = wire_of(end);
    const int kept = label_x ^ label_z ^ label_y ^ now ^ label;
    labels_.exchange(q, now, label);
    if (kept == label_y) {
      before_.h(q);
    } else {
      before_.turn(letter_of_label(kept), q, 1);
    }
    sink_.change(kept, q);
  }

  const PauliFrame& rows_;
  Sink& sink_;
  WireLabels labels_;
  Preimages before_;
};

}  // namespace zelt::braidwerk::internal
