#pragma once

#include <algorithm>
#include <map>
#include <vector>

#include "support/oracles.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/search/internal/walk.h"
#include "zeltbraidwerk/search/internal/window.h"

/// Lists of gates of the search engine, and what they do, the plain way.
namespace support {

namespace internal = zelt::braidwerk::internal;
using Gates = std::vector<internal::Gate>;

/// Gates on random wires, on the edges of a graph if there is one. With `labels` the ends are any
/// labels, otherwise the gates are CNOTs.
inline Gates random_gates(int n, int count, const internal::BitGraph* graph, bool labels,
                          Rng& rng) {
  Gates gates;
  const auto any = [&](int below) {
    return static_cast<int>(rng() % static_cast<unsigned>(below));
  };
  while (static_cast<int>(gates.size()) < count) {
    const int a = any(n);
    const int b = any(n);
    if (a == b || (graph != nullptr && !graph->joined(a, b))) continue;
    gates.push_back(
        labels ? internal::Gate{internal::end_of(a, 1 + any(3)), internal::end_of(b, 1 + any(3))}
               : internal::cnot(a, b));
  }
  return gates;
}

inline internal::BitMatrix map_of(const Gates& gates, int n) {
  internal::BitMatrix map = internal::BitMatrix::identity(n);
  for (const internal::Gate& gate : gates)
    map.add_row(internal::wire_of(gate.a), internal::wire_of(gate.b));
  return map;
}

/// Whether the gates are CNOTs, and wire w ends with row output_on(w) of m, row w if in place.
inline bool implements(const internal::GateList& list, const BoolMatrix& m, bool in_place = false) {
  const auto n = static_cast<int>(m.size());
  structures::CnotCircuit circuit(n);
  for (const internal::Gate& gate : list.gates) {
    if (internal::label_of(gate.a) != internal::label_z) return false;
    if (internal::label_of(gate.b) != internal::label_x) return false;
    circuit.addGate(internal::wire_of(gate.a), internal::wire_of(gate.b));
  }
  std::vector<int> perm(m.size(), -1);
  for (int w = 0; w < n; ++w) perm[at(list.frame.output_on(w))] = w;
  return implements_up_to(circuit, perm, m) && (!in_place || std::ranges::is_sorted(perm));
}

inline internal::BitGraph path(int n) {
  internal::BitGraph graph(n);
  for (int v = 1; v < n; ++v) graph.join(v - 1, v);
  return graph;
}

/// What X, then Z, on the wires after the first `count` gates stand for in front of them: the
/// images under the way back, which takes as many gates. Each wire's other labels than the one of a
/// gate are multiplied by the other wire's label of that gate.
inline internal::PauliFrame pulled_back(const Gates& gates, int count, int n) {
  std::map<internal::End, std::vector<int>> stands_for;  // labels by wire; products are XORs
  for (int q = 0; q < n; ++q) {
    for (int label = 1; label <= 3; ++label) {
      std::vector<int>& string = stands_for[internal::end_of(q, label)];
      string.assign(at(n), 0);
      string[at(q)] = label;
    }
  }
  const auto multiply = [&](internal::End kept, const std::vector<int>& by) {
    for (int label = 1; label <= 3; ++label) {
      if (label == internal::label_of(kept)) continue;
      std::vector<int>& string = stands_for[internal::end_of(internal::wire_of(kept), label)];
      for (int q = 0; q < n; ++q) string[at(q)] ^= by[at(q)];
    }
  };
  for (int k = 0; k < count; ++k) {
    const auto [a, b] = gates[at(k)];
    const std::vector<int> on_a = stands_for[a];
    multiply(a, stands_for[b]);
    multiply(b, on_a);
  }
  internal::PauliFrame frame(n, 2 * n);
  for (int row = 0; row < 2 * n; ++row) {
    const std::vector<int>& string =
        stands_for[internal::end_of(row % n, row < n ? internal::label_x : internal::label_z)];
    for (int q = 0; q < n; ++q) {
      frame.set_letter(row, q,
                       internal::letter_of((string[at(q)] & internal::label_x) != 0,
                                           (string[at(q)] & internal::label_z) != 0));
    }
  }
  return frame;
}

}  // namespace support
