#pragma once

#include <nanobind/nanobind.h>

/// One function a family; each fills the module with its functions and types.
namespace zelt::braidwerk::python {

void bind_boolean_matrix(nanobind::module_& m);
void bind_values(nanobind::module_& m);
void bind_held_gates(nanobind::module_& m);
void bind_tableau(nanobind::module_& m);
void bind_linear(nanobind::module_& m);
void bind_greedy(nanobind::module_& m);
void bind_graph_state(nanobind::module_& m);
void bind_graphs(nanobind::module_& m);
void bind_hamiltonian_path(nanobind::module_& m);
void bind_pauli(nanobind::module_& m);
void bind_pauli_groups(nanobind::module_& m);
void bind_pauli_steps(nanobind::module_& m);
void bind_phase(nanobind::module_& m);
void bind_synthesize(nanobind::module_& m);
void bind_linear_synthesize(nanobind::module_& m);
void bind_phase_synthesize(nanobind::module_& m);
void bind_pauli_synthesize(nanobind::module_& m);
void bind_clifford_synthesize(nanobind::module_& m);
void bind_circuit_optimize(nanobind::module_& m);
void bind_routing(nanobind::module_& m);

}  // namespace zelt::braidwerk::python
