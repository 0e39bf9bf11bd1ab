#include "zeltbraidwerk/linear/search/internal/map_circuits.h"

#include <algorithm>
#include <bit>

#include "zeltbraidwerk/linear/internal/closing.h"
#include "zeltbraidwerk/linear/internal/pair_elimination.h"
#include "zeltbraidwerk/linear/search/internal/depth_table.h"
#include "zeltbraidwerk/linear/search/internal/map_table.h"

namespace zelt::braidwerk::internal {

FreeCircuit free_circuit(const GateList& list) {
  FreeCircuit found(list.wires());
  for (const Gate& gate : list.gates) {
    found.circuit.gates.emplace_back(wire_of(gate.a), wire_of(gate.b));
  }
  found.perm = list.frame.permutation();
  return found;
}

GateList gate_list(const FreeCircuit& found) {
  GateList list = gate_list(found.circuit);
  list.frame = WireFrame(found.perm);
  return list;
}

GateList gate_list(const structures::CnotCircuit& circuit) {
  GateList list(circuit.nbqbits, {});
  for (const auto& [control, target] : circuit.gates) list.gates.push_back(cnot(control, target));
  return list;
}

Draw draw_from(Rng& rng) {
  return [&rng](int low, int high) { return low + rng.below(high - low + 1); };
}

GateList relabelled(const BitMatrix& m) {
  GateList list(m.rows(), {});
  for (int r = 0; r < m.rows(); ++r) {
    for_each_bit(m.row(r), m.stride(), [&](int c) { list.frame.put_output(r, c); });
  }
  return list;
}

GateList by_pairs(const BitMatrix& m, Facing facing) {
  BitMatrix work = face(m, facing);
  FreeCircuit found(m.rows());
  found.circuit = structures::CnotCircuit(m.rows(), pair_elimination(work));
  found.circuit.reverse();
  found.face_back(facing);
  return gate_list(found);
}

GateList shortest_circuit(const BitMatrix& m, bool permuted, Rng& rng) {
  const int n = m.rows();
  if (n < 2) return GateList(n, {});
  const MapTable& table = MapTable::of(n, complete_graph(n), permuted);
  GateList list(n, {});
  const SmallMatrix left = table.descend(small_matrix(m), 0, rng, list.gates);
  for (int r = 0; r < n; ++r) {
    const int c = std::countr_zero((left >> (n * r)) & ((1U << n) - 1));
    list.frame.put_output(r, c);
  }
  return list;
}

GateList closed_within_gates(const GateList& list, Rng& rng) {
  return gate_list(close_within_gates(free_circuit(list), draw_from(rng)));
}

bool implements(const GateList& list, const BitMatrix& m, const BitGraph* device) {
  BitMatrix map = BitMatrix::identity(list.wires());
  for (const Gate& gate : list.gates) {
    if (device != nullptr && !device->joined(wire_of(gate.a), wire_of(gate.b))) return false;
    map.add_row(wire_of(gate.a), wire_of(gate.b));
  }
  for (int w = 0; w < list.wires(); ++w) {
    const int output = list.frame.output_on(w);
    if (!std::equal(map.row(w), map.row(w) + map.stride(), m.row(output))) return false;
  }
  return true;
}

}  // namespace zelt::braidwerk::internal
