#include "zeltbraidwerk/clifford/search/internal/starts.h"

#include <vector>

#include "zeltbraidwerk/clifford/internal/elimination.h"
#include "zeltbraidwerk/clifford/search/internal/circuit.h"
#include "zeltbraidwerk/clifford/search/internal/operator_rows.h"
#include "zeltbraidwerk/clifford/search/internal/placed_rewriter.h"
#include "zeltbraidwerk/clifford/search/internal/window_rewriter.h"

namespace zelt::braidwerk::internal {

GateList eliminated_list(const PauliFrame& images, Outputs outputs) {
  Elimination undone = eliminate_clifford(images, outputs == Outputs::in_place);
  if (outputs == Outputs::in_place) undone.close();
  const GateList on_wires = to_list(inverted(undone.gates), images.qubits());
  // What was gathered on wire w is after the circuit on the wire of its qubit.
  std::vector<int> qubit(undone.wires.size());
  for (std::size_t q = 0; q < qubit.size(); ++q) {
    qubit[static_cast<std::size_t>(undone.wires[q])] = static_cast<int>(q);
  }
  const auto renamed = [&](End end) {
    return end_of(qubit[static_cast<std::size_t>(wire_of(end))], label_of(end));
  };
  GateList list(images.qubits(), {});
  list.gates.reserve(on_wires.gates.size());
  for (const Gate& gate : on_wires.gates) list.gates.push_back({renamed(gate.a), renamed(gate.b)});
  list.frame = on_wires.frame.renamed(renamed);
  return list;
}

namespace {

template <int wires>
GateList shortest_on(const OperatorRows& operator_rows, Outputs outputs, Rng& rng) {
  WindowRows rows = 0;
  for (int i = 0; i < wires; ++i) {
    for (int label = 1; label < 3; ++label) {
      for (int q = 0; q < wires; ++q) {
        const auto letter = static_cast<WindowRows>(operator_rows.label_at(0, i, label, q));
        rows |= letter << (16 * i + 8 * (label - 1) + 2 * q);
      }
    }
  }
  GateList list(wires, {});
  Rewrite left;
  read_ends<wires>(
      outputs == Outputs::anywhere
          ? append_circuit(OperatorTable<wires>::shared(), rows, false, rng, list.gates)
          : append_placed_circuit(PlacedTable<wires>::shared(), rows, false, rng, list.gates),
      left);
  for (int i = 0; i < wires; ++i) {
    for (int label = 0; label < 4; ++label) {
      list.frame[left.ends[static_cast<std::size_t>(i)][static_cast<std::size_t>(label)]] =
          end_of(i, label);
    }
  }
  return list;
}

}  // namespace

GateList shortest_list(const PauliFrame& images, Outputs outputs, Rng& rng) {
  const OperatorRows rows(images);
  switch (rows.wires()) {
    case 2:
      return shortest_on<2>(rows, outputs, rng);
    case 3:
      return shortest_on<3>(rows, outputs, rng);
    default:
      return shortest_on<4>(rows, outputs, rng);
  }
}

}  // namespace zelt::braidwerk::internal
