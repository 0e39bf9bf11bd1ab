#include "zeltbraidwerk/graph_state/graph_state.h"

#include <algorithm>
#include <iostream>
#include <stdexcept>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/foundations/random.h"
#include "zeltbraidwerk/graph_state/internal/action.h"

using structures::Gate;
using zelt::braidwerk::internal::BitMatrix;
using zelt::braidwerk::internal::Control;

namespace {

template <typename Row>
void print_row(const Row& row, int n) {
  for (int k = 0; k < n; ++k) std::cout << row[static_cast<std::size_t>(k)] << ' ';
  std::cout << std::endl;
}

}  // namespace

std::vector<Gate> naive_gs_synthesis(const BoolMatrix& graph) {
  const int n = static_cast<int>(graph.size());
  std::vector<Gate> circuit;
  for (int i = 0; i < n; ++i) {
    zelt::braidwerk::internal::question_point();
    const BoolRow& row = graph[static_cast<std::size_t>(i)];
    if (row[static_cast<std::size_t>(i)]) circuit.push_back(Gate::S(i));
    for (int j = i + 1; j < n; ++j) {
      if (row[static_cast<std::size_t>(j)]) circuit.push_back(Gate::CZ(i, j));
    }
  }
  for (int i = 0; i < n; ++i) circuit.push_back(Gate::H(i));
  return circuit;
}

void simulate_circuit(BoolMatrix& graph, const TripleCircuit& circuit, int n) {
  BitMatrix packed = BitMatrix::pack(graph, n, n);
  act(packed, circuit);
  packed.unpack_into(graph);
}

void check_circuit(BoolMatrix graph, const TripleCircuit& circuit, int n) {
  BitMatrix packed = BitMatrix::pack(graph, n, n);
  act(packed, circuit);
  if (packed.weight() != 0) {
    throw std::logic_error("graph_state: check_circuit: G[i][j] == false");
  }
}

BoolMatrix random_graph(int n) {
  const auto size = static_cast<std::size_t>(std::max(n, 0));
  BoolMatrix graph(size, BoolRow(size));
  const Control control;
  for (std::size_t i = 0; i < size && !control.stop_requested(); ++i) {
    for (std::size_t j = i; j < size; ++j) {
      graph[i][j] = zelt::braidwerk::random::uniform(0, 1) != 0;
      graph[j][i] = graph[i][j];
    }
  }
  return graph;
}

void pretty_print(const BoolMatrix& matrix, int rows, int cols) {
  for (int r = 0; r < rows; ++r) print_row(matrix[static_cast<std::size_t>(r)], cols);
  std::cout << std::endl;
}

void pretty_print(const BoolRow& row, int n) {
  print_row(row, n);
}

void pretty_print(const std::vector<int>& row, int n) {
  print_row(row, n);
}

void print_circuit(const TripleCircuit& circuit) {
  for (const auto& [code, a, b] : circuit) {
    if (code == 0) std::cout << "S    " << a << std::endl;
    if (code == 1) std::cout << "CZ   " << a << ' ' << b << std::endl;
    if (code == 2) std::cout << "CNOT " << a << ' ' << b << std::endl;
  }
  std::cout << std::endl;
}
