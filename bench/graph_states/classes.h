#pragma once

#include <string>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/graph_classes.h"

/// \file
/// All graph states on a few qubits, up to local Clifford operations and names of the qubits, and
/// the fewest two-qubit gates that make them.
///
/// Up to local Clifford operations a Clifford gate on two qubits is the identity, a CNOT, a SWAP,
/// or a CNOT and a SWAP. Since qubits have no names here, a SWAP is no gate: the fewest CNOTs are
/// the fewest Clifford gates on two qubits of any kind. A CNOT is, again up to local operations,
/// a controlled Pauli gate of P on one qubit and Q on another: it multiplies a stabiliser that
/// anticommutes with P by Q, and one that anticommutes with Q by P. There are nine of these on
/// a pair of qubits. So a breadth-first search from the zeros over the classes finds the fewest
/// gates of every class: from any one state of a class, the nine gates on all pairs lead to all
/// classes that a gate leads to.
///
/// The numbers of classes are those of L. E. Danielsen, M. G. Parker, "On the classification of all
/// self-dual additive codes over GF(4) of length up to 12" (2006).
namespace graph_states {

using zelt::braidwerk::internal::most_vertices;
using zelt::braidwerk::internal::SmallGraph;
using zelt::braidwerk::internal::SmallStabilisers;

/// A controlled Pauli gate. Paulis are 1 = X, 2 = Y, 3 = Z.
struct PairGate {
  int a, pauli_a, b, pauli_b;
};

void apply(const PairGate& gate, SmallStabilisers& state);

struct GraphClass {
  SmallGraph graph;               ///< one of the fewest edges; ties: least key
  int size = 0;                   ///< graphs up to names
  int gates = 0;                  ///< the fewest on two qubits
  std::vector<PairGate> circuit;  ///< on zeros, as many; what it makes is in the class
};

/// All classes on n qubits, connected and not, from those of few gates on.
std::vector<GraphClass> classes(int n);

/// The connected ones by gates, then by edges.
std::vector<GraphClass> connected_ones(std::vector<GraphClass> found);
/// Whether the library knows the gates of all: of those that are not connected it adds up the
/// parts.
bool are_known(const std::vector<GraphClass>& found);

/// As the table of the library has it.
std::uint64_t entry_of(const GraphClass& found);
/// A row of the table that the Python package has.
std::string as_csv(const GraphClass& found);

}  // namespace graph_states
