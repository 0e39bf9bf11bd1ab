#include "zeltbraidwerk/clifford/search/internal/encoder_list.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <iterator>
#include <ranges>
#include <utility>

#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/clifford/search/internal/circuit.h"
#include "zeltbraidwerk/clifford/search/internal/search.h"
#include "zeltbraidwerk/clifford/search/internal/starts.h"
#include "zeltbraidwerk/clifford/search/internal/state_list.h"
#include "zeltbraidwerk/clifford/search/internal/tuning.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/search/internal/orders.h"

namespace zelt::braidwerk::internal {
namespace {

constexpr std::size_t gates_per_look = 1 << 12;

Word mask(bool set) {
  return set ? ~Word{0} : Word{0};
}

PauliFrame carried(PauliFrame strings, const GateList& list, int count) {
  for (int k = 0; k < count; ++k) apply_unsigned(strings, list.gates[static_cast<std::size_t>(k)]);
  return strings;
}

/// The strings on the wires after a list as strings of the operation.
PauliFrame read_out(const PauliFrame& strings, const WireFrame& frame) {
  PauliFrame result(strings.qubits(), strings.rows());
  for (int wire = 0; wire < strings.qubits(); ++wire) {
    const End of_x = frame[end_of(wire, label_x)];
    const End of_z = frame[end_of(wire, label_z)];
    const int q = wire_of(of_x);
    for (int w = 0; w < strings.words(); ++w) {
      const Word x = strings.x(wire)[w];
      const Word z = strings.z(wire)[w];
      result.x(q)[w] =
          (x & mask((label_of(of_x) & label_x) != 0)) ^ (z & mask((label_of(of_z) & label_x) != 0));
      result.z(q)[w] =
          (x & mask((label_of(of_x) & label_z) != 0)) ^ (z & mask((label_of(of_z) & label_z) != 0));
    }
  }
  return result;
}

/// X, then Z, on the first `count` of all wires.
PauliFrame inputs(int wires, int count) {
  PauliFrame frame(wires, 2 * count);
  for (int q = 0; q < count; ++q) {
    frame.set_letter(q, q, 1);
    frame.set_letter(count + q, q, 3);
  }
  return frame;
}

/// The gate that takes the last letter off a generator of at least two.
Gate gate_off(const StateGroup& group, int k) {
  End before = 0;
  End last = 0;
  group.each_letter(k, [&](int q, int label) {
    before = last;
    last = end_of(q, label);
  });
  return {end_of(wire_of(before), label_of(before) % 3 + 1), last};
}

int lightest_open(const StateGroup& group) {
  int best = -1;
  for (int k = 0; k < group.generators(); ++k) {
    if (group.weight(k) > 1 && (best < 0 || group.weight(k) < group.weight(best))) best = k;
  }
  return best;
}

/// A short list for an operator, its outputs anywhere.
GateList short_list(const PauliFrame& images, Rng& rng) {
  const int k = images.qubits();
  if (k < 2) return eliminated_list(images, Outputs::anywhere);
  if (k <= clifford_tuning.table_wires) return shortest_list(images, Outputs::anywhere, rng);
  Effort one_greedy_run;
  one_greedy_run.steps = 0;
  return clifford_list(images, {.outputs = Outputs::anywhere, .seed = rng.next()}, one_greedy_run);
}

/// The places of X gates that give strings of Z on the wires of zeros their signs.
std::vector<bool> flips_for(const PauliFrame& strings, const std::vector<int>& zeros) {
  const int r = strings.rows();
  BitMatrix z(r, r);
  BitMatrix signs(r, 1);
  for (int k = 0; k < r; ++k) {
    std::copy_n(strings.z(zeros[static_cast<std::size_t>(k)]), z.stride(), z.row(k));
    signs.set(k, 0, strings.is_negative(k));
  }
  const BitMatrix flipped = solution(z.transposed(), std::move(signs));
  std::vector<bool> flips(static_cast<std::size_t>(strings.qubits()));
  for (int k = 0; k < r; ++k) {
    flips[static_cast<std::size_t>(zeros[static_cast<std::size_t>(k)])] = flipped.get(0, k);
  }
  return flips;
}

/// Whether a string of logical operators has to change its sign, once the zeros are flipped.
bool has_wrong_sign(const PauliFrame& strings, int row, const std::vector<bool>& flips) {
  bool negative = strings.is_negative(row);
  for (int q = 0; q < strings.qubits(); ++q) {
    negative ^= flips[static_cast<std::size_t>(q)] && strings.z_planes().get(q, row);
  }
  return negative;
}

/// Takes the strings back to before the circuit.
void undo(PauliFrame& strings, const std::vector<CliffordGate>& circuit) {
  if (strings.rows() == 0) return;
  std::size_t count = 0;
  for (const CliffordGate& gate : std::views::reverse(circuit)) {
    if (++count % gates_per_look == 0) stop_point();
    strings.apply(gate.inverse());
  }
}

}  // namespace

GateList eliminated_code(StateGroup group) {
  std::vector<Gate> apart;
  while (group.left() > 0) {
    apart.push_back(gate_off(group, lightest_open(group)));
    group.apply(apart.back());
  }
  return backwards(apart, group);
}

Code code_after(const GateList& list, int count, int logical_qubits, bool logicals) {
  const int n = list.wires();
  PauliFrame zeros(n, n - logical_qubits);
  for (int r = 0; r < zeros.rows(); ++r) zeros.set_letter(r, logical_qubits + r, 3);
  PauliFrame others;
  if (logicals) others = carried(inputs(n, logical_qubits), list, count);
  return {carried(std::move(zeros), list, count), std::move(others)};
}

/// What is wanted is a product of the operators that the encoder makes of the inputs and of
/// stabilisers: those on input i that it anticommutes with tell its letter there.
GateList with_logicals(const GateList& encoder, const PauliFrame& logicals, Rng& rng) {
  const int n = encoder.wires();
  const int k = logicals.rows() / 2;
  const PauliFrame own = read_out(carried(inputs(n, k), encoder, encoder.count()), encoder.frame);
  PauliFrame images(k, 2 * k);
  BitMatrix odd(1, own.rows());
  for (int r = 0; r < 2 * k; ++r) {
    own.anticommuting_rows(logicals, r, odd.row(0));
    for (int i = 0; i < k; ++i) {
      images.set_letter(r, i, letter_of(odd.get(0, k + i), odd.get(0, i)));
    }
  }
  GateList before = short_list(images, rng);
  GateList wide(n, std::move(before.gates));
  for (std::size_t end = 0; end < before.frame.size(); ++end) wide.frame[end] = before.frame[end];
  return continued(std::move(wide), encoder, 0);
}

/// Z on a wire of zero controls a letter on another wire, before the encoder, again and again.
PauliFrame images_with_other_gauge(const GateList& encoder, int logical_qubits, int changes,
                                   Rng& rng) {
  const int n = encoder.wires();
  PauliFrame images = read_out(carried(inputs(n, n), encoder, encoder.count()), encoder.frame);
  const int zeros = n - logical_qubits;
  for (int left = zeros > 0 && n > 1 ? changes : 0; left > 0; --left) {
    const int zero = logical_qubits + rng.below(zeros);
    const int other = (zero + 1 + rng.below(n - 1)) % n;
    const int label = 1 + rng.below(3);
    if ((label & label_x) != 0) {
      multiply(images, other, zero);
      multiply(images, n + zero, n + other);
    }
    if ((label & label_z) != 0) {
      multiply(images, n + other, zero);
      multiply(images, n + zero, other);
    }
  }
  return images;
}

CliffordCircuit state_circuit(const GateList& list, const PauliFrame& stabilisers) {
  const int n = list.wires();
  CliffordCircuit circuit = emitted(list);
  PauliFrame strings = on_wires(stabilisers, circuit.wires);
  undo(strings, circuit.gates);
  const std::vector<bool> flips = flips_for(strings, in_order(n));
  std::vector<CliffordGate> first;
  for (int wire = 0; wire < n; ++wire) {
    if (flips[static_cast<std::size_t>(wire)]) first.push_back({CliffordGate::Kind::x, wire});
  }
  circuit.gates.insert(circuit.gates.begin(), first.begin(), first.end());
  return circuit;
}

EncoderCircuit encoder_circuit(const GateList& list, const Code& code) {
  const int n = list.wires();
  const GateList placed = in_place(list);
  EncoderCircuit circuit;
  std::vector<int> zeros;
  for (int wire = 0; wire < n; ++wire) {
    const int place = wire_of(list.frame[end_of(wire, label_x)]);
    (wire < code.logical_qubits() ? circuit.logical_wires : zeros).push_back(place);
  }
  std::ranges::sort(zeros);
  circuit.gates = emitted(placed).gates;
  PauliFrame stabilisers = code.stabilisers;
  undo(stabilisers, circuit.gates);
  const std::vector<bool> flips = flips_for(stabilisers, zeros);
  std::vector<CliffordGate> first;
  for (const int q : zeros) {
    if (flips[static_cast<std::size_t>(q)]) first.push_back({CliffordGate::Kind::x, q});
  }
  PauliFrame logicals = code.logicals;
  undo(logicals, circuit.gates);
  for (int row = 0; row < logicals.rows(); ++row) {
    const int k = code.logical_qubits();
    if (!has_wrong_sign(logicals, row, flips)) continue;
    const int wire = circuit.logical_wires[static_cast<std::size_t>(row % k)];
    first.push_back({row < k ? CliffordGate::Kind::z : CliffordGate::Kind::x, wire});
  }
  circuit.gates.insert(circuit.gates.begin(), first.begin(), first.end());
  circuit.wires = WireFrame(n).permutation();
  circuit.size = size_of(placed);
  return circuit;
}

}  // namespace zelt::braidwerk::internal
