#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"

/// \file
/// Graph states on a few qubits up to local Clifford operations and names of the qubits.
///
/// Two of them are equal up to local Clifford operations when local complementations lead from one
/// graph to the other (M. Van den Nest, J. Dehaene, B. De Moor, "Graphical description of the
/// action of local Clifford transformations on graph states", Phys. Rev. A 69, 2004).
namespace zelt::braidwerk::internal {

constexpr int most_vertices = 9;  ///< of a SmallGraph

/// Row v has bit w where v and w are joined.
struct SmallGraph {
  int n = 0;
  std::array<std::uint16_t, most_vertices> rows{};

  bool joined(int a, int b) const { return (rows[static_cast<std::size_t>(a)] >> b & 1) != 0; }
  int edges() const;
  bool connected() const;
  /// All pairs of neighbours of v are joined where they were not, and the other way round.
  void complement_around(int v);
};

/// Equal for two graphs exactly when they differ in the names of their vertices alone: the least
/// upper triangle of all that remain when colours are refined and vertices told apart one by one.
std::uint64_t canonical_key(const SmallGraph& graph);
SmallGraph graph_of_key(std::uint64_t key, int n);

/// The keys of all graphs that local complementations lead to, that of the graph first. On nine
/// vertices they are 600 on the average, which take 0.03 s.
std::vector<std::uint64_t> keys_of_orbit(const SmallGraph& graph);
/// The one of a graph with the fewest edges; ties: least key.
std::uint64_t representative(const std::vector<std::uint64_t>& keys);

/// A class as graph_class_table.h has it.
std::uint64_t table_entry(int n, std::uint64_t key, int gates);

/// Stabilisers of a state, signs left out: bit q of x and z for each.
struct SmallStabilisers {
  int n = 0;
  std::array<std::uint16_t, most_vertices> x{};
  std::array<std::uint16_t, most_vertices> z{};

  /// A graph whose state is this one up to local Clifford operations.
  SmallGraph graph() const;
};

/// The fewest two-qubit gates that make a state on up to nine qubits from zeros: of its parts that
/// are not entangled with each other, by a table of all that there are, which bench/graph_states
/// has made. It has also found that no state on so many qubits takes fewer gates than its parts do.
/// None for more qubits.
std::optional<int> fewest_gates_of_state(const PauliFrame& stabilisers);

}  // namespace zelt::braidwerk::internal
