#pragma once

#include <vector>

#include "zeltbraidwerk/foundations/internal/bit_matrix.h"
#include "zeltbraidwerk/graph_state/graph_state.h"

namespace zelt::braidwerk::internal {

enum GroupCode { group_cnot = 1, group_cz = 2, group_s_cnot_s = 3 };

/// The groups that may be inserted into a circuit, with their parities as a decoding problem: a row
/// a bit, column 0 the target, column j + 1 candidate j. So a CNOT of the circuit, which adds one
/// bit to another in all of them, is one row addition.
struct Candidates {
  BitMatrix problem;
  std::vector<int> positions;
  std::vector<int> qubits;
  std::vector<int> codes;

  int size() const { return static_cast<int>(codes.size()); }
};

/// The candidates along a circuit that starts at `graph`, on as many qubits. `target` holds a bit a
/// qubit.
Candidates find_candidates(const TripleCircuit& circuit, BitMatrix graph, const Word* target);

/// Inserts the groups of the chosen candidates, ascending, for the new qubit.
void insert_groups(TripleCircuit& circuit, const std::vector<int>& chosen,
                   const std::vector<int>& positions, const std::vector<int>& qubits,
                   const std::vector<int>& codes, int new_qubit);

}  // namespace zelt::braidwerk::internal
