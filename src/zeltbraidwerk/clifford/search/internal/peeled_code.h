#pragma once

#include <optional>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/state_group.h"
#include "zeltbraidwerk/foundations/internal/pauli_frame.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// What takes a state or code apart, and what it leaves.
struct TakenApart {
  std::vector<Gate> gates;
  StateGroup left;  ///< with a letter on each qubit at most
};

/// The label after another one, of three.
constexpr int next_label(int label) {
  return label % 3 + 1;
}

inline int label_at(const PauliFrame& strings, int row, int q) {
  return (strings.x_planes().get(q, row) ? label_x : 0) |
         (strings.z_planes().get(q, row) ? label_z : 0);
}

/// A label for every qubit: those of a generator, of the one that agrees with them on the most
/// qubits, and so on. Then many generators have these alone, which takes no gates: so the first is
/// one of the heaviest.
std::vector<int> common_labels(const PauliFrame& generators, Rng& rng);

/// The group of strings that have one letter on each qubit at most, by generators in echelon form:
/// of a state each is alone on its qubit.
StateGroup alone_on_qubits(const PauliFrame& strings);

/// Takes a state or code apart by its generators as they are, which is short where they have few
/// letters. A letter is chosen for every qubit; generators that have these letters alone are left
/// for later. Of the others one that alone has another letter on some qubit is the last that the
/// circuit makes: that qubit controls the rest of it, a gate for each letter, and none of the other
/// generators becomes heavier. Where there is no such qubit, generators are multiplied by one of
/// them. (Erasures are decoded in this order: M. Luby et al., "Efficient erasure correcting codes",
/// IEEE Trans. Inf. Theory 47 (2001) 569.) Of a code what is left is then taken apart in the same
/// way; of a state nothing is.
///
/// Takes about n^2 r / 64 steps for r generators. Nothing where it would take more than `most`
/// gates.
std::optional<TakenApart> peeled(const StateGroup& group, int most, Rng& rng);

}  // namespace zelt::braidwerk::internal
