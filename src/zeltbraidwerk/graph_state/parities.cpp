#include "zeltbraidwerk/graph_state/parities.h"

#include <algorithm>

#include "zeltbraidwerk/graph_state/internal/candidates.h"

using namespace zelt::braidwerk::internal;

void get_parities(const TripleCircuit& circuit, BoolMatrix graph, BoolRow& target,
                  BoolMatrix& parities, std::vector<int>& positions, std::vector<int>& qubits,
                  std::vector<int>& codes, int n) {
  if (n < 1) return;
  std::vector<Word> bits(static_cast<std::size_t>(words_for(n)));
  pack_row(target, 0, n, bits.data());
  const Candidates found = find_candidates(circuit, BitMatrix::pack(graph, n, n), bits.data());

  const BitMatrix columns = found.problem.transposed();
  unpack_row(columns.row(0), 0, n, target);
  for (int j = 0; j < found.size(); ++j) {
    const auto candidate = static_cast<std::size_t>(j);
    // A row of the graph is as long as it came; what lies beyond n never changes.
    BoolRow parity = found.codes[candidate] == group_cz
                         ? BoolRow(static_cast<std::size_t>(n))
                         : graph[static_cast<std::size_t>(found.qubits[candidate])];
    unpack_row(columns.row(1 + j), 0, n, parity);
    parities.push_back(std::move(parity));
  }
  positions.insert(positions.end(), found.positions.begin(), found.positions.end());
  qubits.insert(qubits.end(), found.qubits.begin(), found.qubits.end());
  codes.insert(codes.end(), found.codes.begin(), found.codes.end());
}

void insert_gates(TripleCircuit& circuit, const std::vector<int>& chosen,
                  const std::vector<int>& positions, const std::vector<int>& qubits,
                  const std::vector<int>& codes, int n) {
  insert_groups(circuit, chosen, positions, qubits, codes, n - 1);
}
