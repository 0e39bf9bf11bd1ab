#pragma once

#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/pauli/search/internal/network_search.h"
#include "zeltbraidwerk/search/internal/effort.h"

namespace zelt::braidwerk::internal {

/// What every network takes that serves some rotations, counted in gates on two wires.
///
/// Gates. A rotation is served when its string is a single letter, so the gates before it join the
/// wires of the string: w - 1 gates for w of them, on a graph no fewer than two of them are apart.
/// Strings that share wires are joined in the end, s wires by s - 1 gates. A gate leaves one label
/// on each of its wires as it was and changes two: four strings at most can be served on its wires
/// that could not be before. Where the operator after the rotations is undone:
/// - The gates after a rotation undo those before it, and are no fewer.
/// - The last gate leaves only letters of qubits on its wires, which serve no string of more.
/// - Each wire of a string of two letters or more meets two gates: between one wire and the others
///   a single gate leaves an operator of rank 1, and a permutation has 0 or 2.
///
/// Layers. A string of w letters takes log2 w layers, on a graph as many as from the nearest wire
/// to its farthest letter; the same again where it is undone.
LowerBound bound_of_network(const PauliFrame& strings, const NetworkTask& task);

/// The fewest gates of a network that is known to have at least `least` and at most `most`, or, if
/// that takes too long, a number in between that none has fewer of: by breadth-first searches over
/// what stands on the wires and which rotations are served, one for each number of gates. On up to
/// four wires and 32 rotations; elsewhere `least`.
int fewest_network_gates(const PauliFrame& strings, const NetworkTask& task, int least, int most);

}  // namespace zelt::braidwerk::internal
