#pragma once

#include <limits>
#include <vector>

#include "zeltbraidwerk/pauli/search/internal/network_block.h"
#include "zeltbraidwerk/search/internal/end_names.h"
#include "zeltbraidwerk/search/internal/walk.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

/// The odds with which a walk from a given circuit goes uphill: drawn, and falling as ever.
Cooling drawn_cooling(Rng& rng);

/// A walk among the networks with the same rotations and the same operator after them, but for
/// gates on single wires: again and again the gates and rotations on three wires that can be
/// brought together are served anew.
class NetworkWalk {
 public:
  /// Where the end is free, the operator after the network does not matter. Gates are between wires
  /// that meet on the graph, null for all. `patience` is how many pieces of sequences are looked at
  /// for most windows.
  NetworkWalk(const std::vector<NetworkEvent>& events, int qubits, bool in_order, bool end_is_free,
              const BitGraph* graph, int patience);

  /// True when the network has changed. `uphill` is the probability of a gate more. Changes that
  /// would make more layers than `most_layers` are not made.
  bool step(float uphill, Rng& rng, int most_layers = std::numeric_limits<int>::max());

  int count() const { return count_; }
  int depth() const { return depth_; }  ///< only kept where layers are limited
  std::vector<NetworkEvent> events() const;
  /// By end after the network that the walk began with: what it is called after this one.
  const std::vector<End>& names() const { return after_; }

 private:
  unsigned pairs_that_meet() const;
  void rename_gates(int from);
  void rename_ends();
  int layers() const;

  const BitGraph* graph_;
  int qubits_;
  bool end_is_free_;
  int patience_;
  int count_ = 0;
  int depth_ = 0;
  std::vector<Gate> gates_;  // both ends of a rotation are the same
  std::vector<int> rows_;
  WindowFinder finder_;
  Window window_;
  NetworkBlock block_;
  std::vector<NetworkEvent> inside_;
  std::vector<Gate> new_gates_;
  std::vector<int> new_rows_;
  std::vector<Gate> old_gates_;
  std::vector<int> old_rows_;
  EndNames names_;
  std::vector<End> after_;
};

}  // namespace zelt::braidwerk::internal
