#include "zeltbraidwerk/pauli/internal/diagonaliser.h"

#include <algorithm>
#include <iterator>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/graphs/routines.h"
#include "zeltbraidwerk/pauli/internal/table_frame.h"
#include "zeltbraidwerk/pauli/internal/tree_diagonaliser.h"

namespace zelt::braidwerk::internal {
namespace {

/// Word w of the plane of rows whose letter on q is neither I nor p.
Word other_letter(const PauliFrame& frame, int q, int p, int w) {
  const Word x = frame.x(q)[w];
  const Word z = frame.z(q)[w];
  return p == 1 ? z : p == 2 ? x ^ z : x;
}

}  // namespace

void Diagonaliser::update_single_qubits() {
  std::erase_if(active, [this](int q) {
    const int letter = single_letter(frame, q);
    if (letter > 0) bring_to_z(frame, q, letter, circuit);
    return letter >= 0;
  });
}

bool Diagonaliser::pair_passes(int q1, int p1, int q2, int p2) const {
  for (int w = 0; w < frame.words(); ++w) {
    if (other_letter(frame, q1, p1, w) != other_letter(frame, q2, p2, w)) return false;
  }
  return true;
}

bool Diagonaliser::update_pair_qubits() {
  for (auto first = active.begin(); first != active.end(); ++first) {
    stop_point();
    for (auto second = std::next(first); second != active.end(); ++second) {
      const int q1 = *first;
      const int q2 = *second;
      if (graph != nullptr && !graph->are_neighbors(q1, q2)) continue;
      for (int p2 = 1; p2 <= 3; ++p2) {
        for (int p1 = 1; p1 <= 3; ++p1) {
          if (!pair_passes(q1, p1, q2, p2)) continue;
          bring_to_z(frame, q1, p1, circuit);
          bring_to_z(frame, q2, p2, circuit);
          apply_cnot(frame, q1, q2, circuit);
          active.erase(second);
          return true;
        }
      }
    }
  }
  return false;
}

void Diagonaliser::greedy_step() {
  const std::vector<int> qubits(active.begin(), active.end());
  const int row = frame.lightest_row(qubits);
  if (row < 0) {
    active.clear();
    return;
  }
  const std::vector<int> support = support_on(frame, row, qubits);
  const int root = support.back();
  for (const int q : support) bring_to_z(frame, q, frame.letter(row, q), circuit);
  gather(support);
  active.erase(root);
}

/// Brings the Z of a row on the qubits together on the last of them.
void Diagonaliser::gather(std::vector<int> qubits) {
  if (qubits.size() < 2) return;
  if (graph == nullptr) {
    for (std::size_t i = 0; i + 1 < qubits.size(); ++i) {
      apply_cnot(frame, qubits[i], qubits[i + 1], circuit);
    }
    return;
  }
  const int root = qubits.back();
  const structures::Graph tree = graph->steiner_tree(qubits);
  // Other rows may pick up an X on the way.
  active.insert(tree.vertices.begin(), tree.vertices.end());
  for (const structures::Gate& gate : routines::fan_in_on_tree(tree, qubits, root)) {
    apply_cnot(frame, gate.qbits[0], gate.qbits[1], circuit);
  }
}

void Diagonaliser::run() {
  // Without a graph each pass takes a qubit away. With one, qubits may come back again and again.
  for (int pass = 0; !active.empty(); ++pass) {
    stop_point();
    if (pass == 2 * frame.qubits()) {
      active.clear();
      return diagonalise_on_tree(frame, *graph, circuit);
    }
    update_single_qubits();
    if (!active.empty() && !update_pair_qubits()) greedy_step();
  }
}

std::vector<structures::Gate> diagonalise(PauliFrame& frame, structures::Graph* graph) {
  std::vector<structures::Gate> circuit;
  std::set<int> active;
  for (int q = 0; q < frame.qubits(); ++q) {
    const std::array<int, 4> counts = frame.letter_counts(q);
    if (counts[0] != frame.rows()) active.insert(q);
  }
  Diagonaliser{frame, active, circuit, graph}.run();
  return circuit;
}

}  // namespace zelt::braidwerk::internal
