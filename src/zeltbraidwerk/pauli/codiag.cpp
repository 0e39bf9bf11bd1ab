#include "zeltbraidwerk/pauli/codiag.h"

#include "zeltbraidwerk/pauli/internal/diagonaliser.h"
#include "zeltbraidwerk/pauli/internal/table_frame.h"

using namespace zelt::braidwerk::internal;
using structures::Gate;
using structures::Graph;
using structures::Parameter;

namespace {

std::vector<Gate> diagonalise_table(PauliTable& table, std::vector<Parameter>& params,
                                    Graph* graph) {
  PauliFrame frame = pack_table(table);
  std::vector<Gate> circuit = diagonalise(frame, graph);
  unpack_table(frame, table, params);
  return circuit;
}

/// One step on the packed table.
bool step_on_table(PauliTable& table, std::vector<Parameter>& params, std::set<int>& active,
                   std::vector<Gate>& circuit, Graph* graph, bool (*step)(Diagonaliser)) {
  PauliFrame frame = pack_table(table);
  const bool found = step(Diagonaliser{frame, active, circuit, graph});
  unpack_table(frame, table, params);
  return found;
}

bool step_pairs(Diagonaliser step) {
  return step.update_pair_qubits();
}

bool step_greedily(Diagonaliser step) {
  step.greedy_step();
  return true;
}

bool step_single_qubits(Diagonaliser step) {
  step.update_single_qubits();
  return true;
}

}  // namespace

std::vector<Gate> duncan_co_diag(PauliTable& table, std::vector<Parameter>& params) {
  return diagonalise_table(table, params, nullptr);
}

std::vector<Gate> generate_basis_change_aa(PauliTable& table, std::vector<Parameter>& params,
                                           Graph& graph) {
  return diagonalise_table(table, params, &graph);
}

void update_single_qubits(PauliTable& table, std::vector<Parameter>& params, std::set<int>& active,
                          std::vector<Gate>& circuit) {
  step_on_table(table, params, active, circuit, nullptr, step_single_qubits);
}

bool update_pair_qubits(PauliTable& table, std::vector<Parameter>& params, std::set<int>& active,
                        std::vector<Gate>& circuit) {
  return step_on_table(table, params, active, circuit, nullptr, step_pairs);
}

bool update_pair_qubits_aa(PauliTable& table, std::vector<Parameter>& params, std::set<int>& active,
                           std::vector<Gate>& circuit, Graph& graph) {
  return step_on_table(table, params, active, circuit, &graph, step_pairs);
}

void greedy_diag(PauliTable& table, std::vector<Parameter>& params, std::set<int>& active,
                 std::vector<Gate>& circuit) {
  step_on_table(table, params, active, circuit, nullptr, step_greedily);
}

void greedy_diag_aa(PauliTable& table, std::vector<Parameter>& params, std::set<int>& active,
                    std::vector<Gate>& circuit, Graph& graph) {
  step_on_table(table, params, active, circuit, &graph, step_greedily);
}
