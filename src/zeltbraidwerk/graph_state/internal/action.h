#pragma once

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graph_state/graph_state.h"

namespace zelt::braidwerk::internal {

enum GateCode { code_s = 0, code_cz = 1, code_cnot = 2 };

/// The action of one gate on a graph.
inline void act(BitMatrix& graph, const GateTriple& gate) {
  const auto& [code, a, b] = gate;
  switch (code) {
    case code_s:
      return graph.flip(a, a);
    case code_cz:
      graph.flip(a, b);
      return graph.flip(b, a);
    case code_cnot:
      graph.add_col(b, a);
      return graph.add_row(b, a);
    default:
      return;
  }
}

inline void act(BitMatrix& graph, const TripleCircuit& circuit) {
  for (const GateTriple& gate : circuit) act(graph, gate);
}

}  // namespace zelt::braidwerk::internal
