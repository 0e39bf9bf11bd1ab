#pragma once

#include <optional>
#include <vector>

#include "zeltbraidwerk/clifford/search/internal/state_group.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// What takes a state or code apart, and what it leaves.
struct TakenApart {
  std::vector<Gate> gates;
  StateGroup left;  ///< with a letter on each qubit at most
};

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
