#pragma once

#include <limits>
#include <optional>
#include <vector>

#include "zeltbraidwerk/pauli/search/internal/network_problem.h"
#include "zeltbraidwerk/search/internal/effort.h"

namespace zelt::braidwerk::internal {

/// A way to serve all rotations.
struct Network {
  std::vector<NetworkEvent> events;
  std::vector<int> wires;
  int open = 0;  // gates before the last rotation
  int count = 0;
  int depth = 0;
};

/// The best networks of a search so far.
class NetworkKeeper {
 public:
  /// The meter hears of every better one. It must outlive this.
  NetworkKeeper(bool by_depth, Meter& meter) : by_depth_(by_depth), meter_(meter) {}

  /// Kept where it is no worse than the best, so that searches go on from another one.
  void offer(Network network);
  /// The same for a run that is made with any effort.
  void offer_first(Network network);

  const Network& best() const { return *best_; }        ///< of fewest gates
  const Network& shallow() const { return *shallow_; }  ///< of fewest layers
  const Network& answer() const { return by_depth_ ? shallow() : best(); }
  /// What is to become small.
  int size(const Network& network) const { return by_depth_ ? network.depth : network.count; }
  /// The size of the best of the runs that are made with any effort.
  int first() const { return first_; }

 private:
  bool by_depth_;
  Meter& meter_;
  int first_ = std::numeric_limits<int>::max();
  std::optional<Network> best_;
  std::optional<Network> shallow_;
};

}  // namespace zelt::braidwerk::internal
