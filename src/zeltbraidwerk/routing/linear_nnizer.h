#pragma once

#include <vector>

#include "zeltbraidwerk/graphs/graph.h"
#include "zeltbraidwerk/routing/normal_form.h"

/// \file
/// Routing without SWAP gates: only the rotations of a circuit's normal form are emitted, each as a
/// fan-in along a Steiner tree of the device and one "RZ". The Clifford part of a fan-in is not
/// undone: the rotations that follow are read through it, and what is left at the end is handed
/// back as a tableau.

namespace synthesis {

/// Appends to `out` gates "H", "RX" by pi/2, "CNOT" on edges of the graph, and one "RZ" a rotation,
/// such that the circuit equals `out` followed by frame.inverse(), up to a global phase. On entry
/// `frame` is the identity on as many qubits as the graph has; graph.set_shortest_paths has run.
///
/// Of the current block the rotation of the cheapest tree comes next (of equal ones the first), and
/// lands on the qubit of its support with which the CNOTs of its fan-in and of the `depth`
/// rotations after it are fewest (of equal ones the smallest; with depth 0 always the smallest).
/// `commuting_blocks` and `merge` are those of normalize_circuit; `sketch_mode` is stored in the
/// graph and chooses its tree builder. At each level of the search the tree of every rotation of
/// the block is asked for by graph.steiner_tree: the graph's cache answers, whichever builder made
/// its tree, and keeps each one, O(n^2) bits, as long as the graph lives.
///
/// A frame other than the identity is read twice, by the normal form and by the search, and stays
/// in the product: with V its operator, the circuit in front of which stands V-dagger twice comes
/// out, as far as its rotations go. Throws what normalize_circuit throws; std::out_of_range where
/// the path table is missing; std::logic_error "ooops" where a sketched tree closes a cycle, or a
/// tree is in parts since the device is, with `out` and `frame` partly updated.
///
/// Cost: the waiting rotations are kept as they stand, so a rotation costs O(gates of its fan-in *
/// waiting / 64) and the trees of its block that are new; each level of lookahead multiplies by the
/// size of a support. Nothing limits `depth`.
ZELTBRAIDWERK_EXPORT void clifford_nnize(const std::vector<structures::Gate>& circuit,
                                         structures::Graph& graph, int depth, bool commuting_blocks,
                                         bool merge, std::vector<structures::Gate>& out,
                                         structures::OperatorTableau& frame, int sketch_mode);

/// One choice of clifford_nnize, among blocks[block], with the frame as it stands: the cost of the
/// best plan. `gates` receives the basis change and the fan-in, `qubit` the root, `index` the place
/// of the rotation in its block, `flip` whether its angle changes sign. 0, and nothing written, for
/// an empty block or one past the end. An identity string has no root and costs 0.
ZELTBRAIDWERK_EXPORT int cost_clifford_order(int block, std::vector<RotationSequence>& blocks,
                                             structures::OperatorTableau frame,
                                             structures::Graph& graph, int depth,
                                             std::vector<structures::Gate>& gates, int& qubit,
                                             int& index, bool& flip);

/// clifford_nnize with the root chosen by the CNOT depths of the fan-ins, added up along a plan,
/// instead of their CNOTs. The next rotation is chosen as there. Writes the text of
/// structures::cnot_depth to standard output for each fan-in that it looks at.
ZELTBRAIDWERK_EXPORT void clifford_nnize_depth(const std::vector<structures::Gate>& circuit,
                                               structures::Graph& graph, int depth,
                                               bool commuting_blocks, bool merge,
                                               std::vector<structures::Gate>& out,
                                               structures::OperatorTableau& frame, int sketch_mode);

/// One choice of clifford_nnize_depth; otherwise as cost_clifford_order.
ZELTBRAIDWERK_EXPORT int cost_clifford_order_depth(int block, std::vector<RotationSequence>& blocks,
                                                   structures::OperatorTableau frame,
                                                   structures::Graph& graph, int depth,
                                                   std::vector<structures::Gate>& gates, int& qubit,
                                                   int& index, bool& flip);

}  // namespace synthesis
