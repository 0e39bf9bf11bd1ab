#include "zeltbraidwerk/pauli/search/internal/network_keeper.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace zelt::braidwerk::internal {

void NetworkKeeper::offer_first(Network network) {
  first_ = std::min(first_, size(network));
  offer(std::move(network));
}

void NetworkKeeper::offer(Network network) {
  const auto count_first = [](const Network& n) { return std::tuple(n.count, n.depth); };
  const auto depth_first = [](const Network& n) { return std::tuple(n.depth, n.count); };
  const auto found = std::tuple(network.count, network.depth);
  bool better = false;
  if (!shallow_ || depth_first(network) < depth_first(*shallow_)) {
    better = by_depth_;
    shallow_ = network;
  }
  if (!best_ || count_first(network) <= count_first(*best_)) {
    better |= !by_depth_ && (!best_ || count_first(network) < count_first(*best_));
    best_ = std::move(network);
  }
  if (better) meter_.better(std::get<0>(found), std::get<1>(found));
}

}  // namespace zelt::braidwerk::internal
