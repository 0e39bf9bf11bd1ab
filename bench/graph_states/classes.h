#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

/// \file
/// All graph states on a few qubits, up to local Clifford operations and names of the qubits, and
/// the fewest two-qubit gates that make them.
///
/// Up to local Clifford operations a Clifford gate on two qubits is the identity, a CNOT, a SWAP,
/// or a CNOT and a SWAP. Since qubits have no names here, a SWAP is no gate: the fewest CNOTs are
/// the fewest Clifford gates on two qubits of any kind. A CNOT is, again up to local operations,
/// the gate that measures nothing of P on one qubit and Q on another: it multiplies a stabiliser
/// that anticommutes with P by Q, and one that anticommutes with Q by P. There are nine of these on
/// a pair of qubits. So a breadth-first search from the zeros over the classes finds the fewest
/// gates of every class: from any one state of a class, the nine gates on all pairs lead to all
/// classes that a gate leads to.
///
/// Two graph states are equal up to local Clifford operations when local complementations lead from
/// one graph to the other (M. Van den Nest, J. Dehaene, B. De Moor, "Graphical description of the
/// action of local Clifford transformations on graph states", 2004). The numbers of classes are
/// those of L. E. Danielsen, M. G. Parker, "On the classification of all self-dual additive codes
/// over GF(4) of length up to 12" (2006).
namespace graph_states {

constexpr int most_vertices = 9;

/// Row v has bit w where v and w are joined.
struct SmallGraph {
  int n = 0;
  std::array<std::uint16_t, most_vertices> rows{};

  bool joined(int a, int b) const { return (rows[static_cast<std::size_t>(a)] >> b & 1) != 0; }
  int edges() const;
  bool connected() const;
  /// All pairs of neighbours of v are joined where they were not, and the other way round.
  void complement_around(int v);
  std::string graph6() const;
};

/// Equal for two graphs exactly when they differ in the names of their vertices alone: the least
/// upper triangle of all that remain when colours are refined and vertices told apart one by one.
std::uint64_t canonical_key(const SmallGraph& graph);
SmallGraph graph_of_key(std::uint64_t key, int n);

/// Paulis are 1 = X, 2 = Y, 3 = Z.
struct PairGate {
  int a, pauli_a, b, pauli_b;
};

/// Stabilisers of a state, signs left out: bit q of x and z for each.
struct Stabilisers {
  int n = 0;
  std::array<std::uint16_t, most_vertices> x{};
  std::array<std::uint16_t, most_vertices> z{};

  static Stabilisers of_zeros(int n);
  void apply(const PairGate& gate);
  /// A graph whose state is this one up to local Clifford operations.
  SmallGraph graph() const;
};

struct GraphClass {
  SmallGraph graph;               ///< one of the fewest edges; ties: least key
  int size = 0;                   ///< graphs up to names
  int gates = 0;                  ///< the fewest on two qubits
  std::vector<PairGate> circuit;  ///< on zeros, as many; what it makes is in the class
};

/// All classes on n qubits, connected and not, from those of few gates on.
std::vector<GraphClass> classes(int n);

/// The connected ones by gates, then by edges, as lines of the table.
std::vector<std::string> lines_of_table(int n);

}  // namespace graph_states
