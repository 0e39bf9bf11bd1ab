#pragma once

#include <set>
#include <vector>

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/graphs/graph.h"

namespace zelt::braidwerk::internal {

/// Greedy co-diagonalisation of the rows of a frame. With a graph, CNOTs keep to its edges.
///
/// Invariant: no row has an X or a Y outside the active qubits, and the network of the rows at the
/// start equals the circuit, the network of the rows now, and the inverse of the circuit.
class Diagonaliser {
 public:
  PauliFrame& frame;
  std::set<int>& active;
  std::vector<structures::Gate>& circuit;
  structures::Graph* graph = nullptr;

  void run();
  void update_single_qubits();
  bool update_pair_qubits();
  void greedy_step();

 private:
  bool pair_passes(int q1, int p1, int q2, int p2) const;
  void gather(std::vector<int> qubits);
};

/// All of it: returns the circuit, and leaves the frame diagonal if its rows commute.
std::vector<structures::Gate> diagonalise(PauliFrame& frame, structures::Graph* graph = nullptr);

}  // namespace zelt::braidwerk::internal
