#pragma once

#include "zeltbraidwerk/clifford/search/internal/window_rewriter.h"

namespace zelt::braidwerk::internal {

/// Replaces windows of circuits that begin with zeros on all wires. On a wire that no gate has
/// touched, in front of the window, whatever Z on it controls does nothing: of all operators that
/// the window may then as well be, one that takes the fewest gates is taken.
class StateRewriter {
 public:
  static constexpr Gathering gathering = Gathering::by_labels;
  static constexpr bool judges = false;

  /// Windows of 2 to 4 wires. The table for four is built when they come up first.
  explicit StateRewriter(int wires) : wires_(wires) {}

  int window_size(Rng&) const { return wires_; }
  bool rewrite(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) const;

 private:
  int wires_;
};

}  // namespace zelt::braidwerk::internal
