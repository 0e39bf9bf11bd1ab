#include "zeltbraidwerk/clifford/clifford_circuit.h"

#include "zeltbraidwerk/clifford/internal/elimination.h"

namespace zi = zelt::braidwerk::internal;
using structures::OperatorTableau;

std::vector<structures::Gate> synthesis::clifford_circuit(const OperatorTableau& tableau) {
  zi::Elimination undone = zi::eliminate_clifford(zi::images_under(tableau), true);
  undone.close();
  return zi::to_gates(zi::inverted(undone.gates));
}
