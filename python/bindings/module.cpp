#include "module.h"

NB_MODULE(_core, m) {
  using namespace zelt::braidwerk::python;
  m.doc() =
      "Functions and value types of libzeltbraidwerk under their own names. Arguments that do not "
      "fit "
      "raise ValueError, TypeError, IndexError or TooLargeError; RuntimeError is the library's "
      "own.";
  m.attr("_version") = ZELTBRAIDWERK_VERSION;
  bind_boolean_matrix(m);
  bind_values(m);
  bind_held_gates(m);
  bind_tableau(m);
  bind_linear(m);
  bind_greedy(m);
  bind_graphs(m);
  bind_hamiltonian_path(m);
  bind_graph_state(m);
  bind_pauli(m);
  bind_pauli_groups(m);
  bind_pauli_steps(m);
  bind_phase(m);
  bind_routing(m);
  bind_synthesize(m);
  bind_linear_synthesize(m);
  bind_phase_synthesize(m);
  bind_pauli_synthesize(m);
  bind_clifford_synthesize(m);
  bind_circuit_optimize(m);
}
