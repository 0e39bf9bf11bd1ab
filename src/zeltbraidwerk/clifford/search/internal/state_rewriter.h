#pragma once

#include "zeltbraidwerk/clifford/search/internal/code.h"
#include "zeltbraidwerk/clifford/search/internal/window_rewriter.h"

namespace zelt::braidwerk::internal {

/// Replaces windows of circuits that begin with zeros on all wires but the first ones, the logical
/// qubits of a code. On a wire of zero that no gate has touched before the window, whatever Z on it
/// controls does nothing: of all operators that the window may then as well be, one that takes the
/// fewest gates is taken. Where any logical operators will do, gates among logical qubits that no
/// gate has touched do nothing either.
class StateRewriter {
 public:
  static constexpr Gathering gathering = Gathering::by_labels;
  static constexpr bool judges = false;

  /// Windows of 2 to 4 wires. The table for four is built when they come up first.
  StateRewriter(int wires, const Code& code)
      : wires_(wires), logical_(code.logical_qubits()), any_logicals_(code.any_logicals()) {}

  int window_size(Rng&) const { return wires_; }
  bool rewrite(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) const;

 private:
  template <int wires>
  bool rewrite_on(const Window& window, float uphill, Rng& rng, Rewrite& rewrite) const;
  unsigned logical_places(const Window& window) const;

  int wires_;
  int logical_;
  bool any_logicals_;
};

}  // namespace zelt::braidwerk::internal
