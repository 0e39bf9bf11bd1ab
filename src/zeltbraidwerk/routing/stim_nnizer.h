#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "zeltbraidwerk/graphs/graph.h"
#include "zeltbraidwerk/routing/normal_form.h"

/// \file
/// clifford_nnize with the running frame held by Stim (C. Gidney, "Stim: a fast stabilizer circuit
/// simulator", Quantum 5 (2021) 497). Same answers. These functions are there in a library that was
/// built with Stim; callers include Stim's own headers, with 64-bit words.

namespace stim {
template <std::size_t W>
struct Tableau;
template <std::size_t W>
struct PauliString;
}  // namespace stim

namespace synthesis {

using StimTableau = stim::Tableau<64>;    ///< an operator
using StimPauli = stim::PauliString<64>;  ///< a string with its sign
/// Rotations in time order, as RotationSequence.
using StimRotations = std::vector<std::pair<StimPauli, structures::Parameter>>;

/// As clifford_nnize; of `frame` only the size counts on entry. On return it is the tableau of the
/// inverse of the operator that has to follow `out`.
ZELTBRAIDWERK_EXPORT void clifford_nnize_stim(const std::vector<structures::Gate>& circuit,
                                              structures::Graph& graph, int depth,
                                              bool commuting_blocks, bool merge,
                                              std::vector<structures::Gate>& out,
                                              StimTableau& frame, int sketch_mode);

/// As cost_clifford_order.
ZELTBRAIDWERK_EXPORT int cost_clifford_order_stim(int block, std::vector<StimRotations>& blocks,
                                                  StimTableau frame, structures::Graph& graph,
                                                  int depth, std::vector<structures::Gate>& gates,
                                                  int& qubit, int& index, bool& flip);

/// Appends gates to the tableau: "CNOT", "CZ", "CSIGN", "H", and "RZ", "PH" and "RX" by pi/2, pi
/// and 3 pi/2 (and 2 pi more). Any other name or angle, -pi/2 among them, changes nothing. Throws
/// std::logic_error for a rotation by a symbolic angle.
ZELTBRAIDWERK_EXPORT void update_stim_tableau_left(const std::vector<structures::Gate>& gates,
                                                   StimTableau& tableau);

/// The same operator. O(n^2).
ZELTBRAIDWERK_EXPORT StimTableau convert_to_stim(structures::OperatorTableau& tableau);

/// As get_basis_change.
ZELTBRAIDWERK_EXPORT std::vector<structures::Gate> get_basis_change_stim(const StimPauli& pauli,
                                                                         int n);

}  // namespace synthesis
