#pragma once

#include <vector>

#include "zeltbraidwerk/pauli/internal/rotations.h"

namespace zelt::braidwerk::internal {

/// The circuits of greedy_pauli_synth and greedy_pauli_synth_depth, for any angles and any strings.
///
/// They end. A move of a positive score first changes, going down the sorted list, the weight of a
/// row that it makes lighter: before, rows up to the shorter of the two leads hold I on both of its
/// qubits; the row there keeps its one letter or loses one of two, or else no lead grew; and the
/// longer lead grows only by a row that loses one of two letters. So with each pass, of moves on
/// disjoint qubits, the sorted list of weights falls in lexicographic order.
std::vector<structures::Gate> synthesise_greedily(Rotations rotations);
std::vector<structures::Gate> synthesise_in_matchings(Rotations rotations);

}  // namespace zelt::braidwerk::internal
