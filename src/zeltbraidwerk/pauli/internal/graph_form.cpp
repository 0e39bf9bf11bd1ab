#include "zeltbraidwerk/pauli/internal/graph_form.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <utility>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/internal/echelon.h"
#include "zeltbraidwerk/graph_state/internal/synthesis.h"
#include "zeltbraidwerk/pauli/internal/diagonaliser.h"

using structures::Gate;

namespace zelt::braidwerk::internal {
namespace {

Gate to_gate(const GateTriple& triple) {
  const auto& [code, a, b] = triple;
  switch (code) {
    case 0:
      return Gate::S(a);
    case 1:
      return Gate::CZ(a, b);
    case 2:
      return Gate::CNOT(a, b);
    default:
      throw std::runtime_error("Unknown gate code in syndrome decoding graph state synthesis");
  }
}

void append_synthesis(const BitMatrix& graph, int method, const Draw& draw,
                      std::vector<Gate>& circuit) {
  if (method == 1) {
    const std::vector<Gate> gates = naive_gs_synthesis(graph.unpack());
    circuit.insert(circuit.end(), gates.begin(), gates.end());
    return;
  }
  TripleCircuit triples;
  synthesise_graph_state(graph, triples, 1, draw, Control{});
  for (const GateTriple& triple : triples) circuit.push_back(to_gate(triple));
  for (int q = 0; q < graph.rows(); ++q) circuit.push_back(Gate::H(q));
}

bool is_diagonal(const PauliFrame& frame) {
  return frame.x_planes().weight() == 0;
}

}  // namespace

GraphForm graph_form_of(const PauliFrame& frame) {
  const int n = frame.qubits();
  BitMatrix z = frame.z_planes();
  BitMatrix x = frame.x_planes();
  GraphForm form;
  // The rows of the final X up to q, which stay independent as long as one of the two choices on
  // each qubit lets them.
  RowSpace chosen(frame.rows());
  for (int q = 0; q < n && rank(x) != n; ++q) {
    stop_point();
    if (chosen.rank() == q && !chosen.contains(z.row(q))) {
      form.gates.push_back(Gate::H(q));
      std::swap_ranges(z.row(q), z.row(q) + z.stride(), x.row(q));
    }
    chosen.add(x.row(q));
  }
  if (rank(x) != n) throw std::runtime_error("Couldn't find a full rank set of rotations");
  BitMatrix x_rows = x.transposed();
  BitMatrix z_rows = z.transposed();
  reduce_to_echelon(x_rows, z_rows);
  form.graph = z_rows.block(0, 0, n, n);
  return form;
}

std::vector<Gate> diagonalise_by_graph_state(PauliFrame& frame, int method, const Draw& draw) {
  auto [graph, circuit] = graph_form_of(frame);
  append_synthesis(graph, method, draw, circuit);
  PauliFrame rewritten = frame;
  for (const Gate& gate : circuit) rewritten.apply(gate);
  if (!is_diagonal(rewritten)) {
    throw std::runtime_error("Something went wrong during co diag process!");
  }
  frame = std::move(rewritten);
  return std::move(circuit);
}

std::vector<Gate> change_basis(PauliFrame& frame, int method, int& failures, const Draw& draw) {
  if (method == 0) return diagonalise(frame);
  try {
    return diagonalise_by_graph_state(frame, method, draw);
  } catch (const std::runtime_error&) {
  } catch (const std::bad_alloc&) {
  }
  ++failures;
  return diagonalise(frame);
}

}  // namespace zelt::braidwerk::internal
