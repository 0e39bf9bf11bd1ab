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
/// brought together are served anew. With exchanges, two wires of a window may also change roles in
/// all that comes after it, which takes a gate less or more there, until they do so again somewhere
/// else: what lies between, however long, is out of reach of the windows alone.
class NetworkWalk {
 public:
  /// Where the end is free, the operator after the network does not matter. Gates are between wires
  /// that meet on the graph, null for all. `patience` is how many pieces of sequences are looked at
  /// for most windows. Exchanges are made where the end is not free and all wires meet.
  NetworkWalk(const std::vector<NetworkEvent>& events, int qubits, bool in_order, bool end_is_free,
              const BitGraph* graph, int patience, bool exchanges = false);

  /// True when the network has changed. `uphill` is the probability of a gate more. Changes that
  /// would make more layers than `most_layers` are not made.
  bool step(float uphill, Rng& rng, int most_layers = std::numeric_limits<int>::max());

  int count() const { return count_; }
  /// Whether every wire has the role that it began with: only then the network is an answer.
  bool in_place() const { return swaps_ == 0; }
  int depth() const { return depth_; }  ///< only kept where layers are limited
  std::vector<NetworkEvent> events() const;
  /// By end after the network that the walk began with: what it is called after this one.
  std::vector<End> names() const;

 private:
  int more_swaps(const NetworkBlock::Exchange& exchange) const;
  unsigned pairs_that_meet() const;
  void rename_gates(int from);
  void rename_ends();
  int layers() const;
  End placed(End end) const {
    return end_of(window_.wires[static_cast<std::size_t>(wire_of(end))], label_of(end));
  }
  /// What it was at the beginning.
  int role(int wire) const {
    return wire_of(began_[static_cast<std::size_t>(end_of(wire, label_x))]);
  }

  const BitGraph* graph_;
  int qubits_;
  bool end_is_free_;
  int patience_;
  bool exchanges_;
  int swaps_ = 0;  // that would bring all wires back
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
  std::vector<End> began_;  // by end after this network: what it was called at the beginning
};

}  // namespace zelt::braidwerk::internal
