#pragma once

#include <utility>

#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/task.h"

namespace zelt::braidwerk::internal {

/// How a search came by a circuit that it offers. It decides whether the circuit may still be taken
/// when the effort has ended: only where a search that goes on would come to one at least as good.
enum class Origin {
  certain,         ///< with more effort it would have been offered all the same
  lowering_count,  ///< the shortest yet of a walk: with more effort this one or one with fewer
                   ///< gates
  lowering_depth,  ///< the same of a walk that lowers the layers
  derived,         ///< made from where the search stood: with more effort from somewhere else
};

/// The best circuit of a search so far. This is the only place that knows the rule that more effort
/// is never worse. The meter hears of every better circuit; it must outlive this.
///
/// Ties: the first circuit stays, or with `latest` the last one offered takes its place, so that a
/// search goes on from elsewhere; the meter does not hear of that.
template <class Circuit>
class Incumbent {
 public:
  enum class Ties { first, latest };

  Incumbent(Objective objective, Meter& meter, Ties ties = Ties::first)
      : objective_(objective), meter_(meter), ties_(ties) {}

  bool empty() const { return empty_; }
  const Circuit& best() const { return best_; }
  const CircuitSize& size() const { return size_; }

  /// Whether a circuit of this size would be taken.
  bool wants(const CircuitSize& size, Origin origin) const {
    if (empty_) return true;
    if (meter_.ended() && !lasts(origin)) return false;
    const auto now = size_.key(objective_);
    const auto other = size.key(objective_);
    return ties_ == Ties::first ? other < now : other <= now;
  }

  /// True when it was taken.
  template <class C>
  bool offer(C&& circuit, const CircuitSize& size, Origin origin) {
    if (!wants(size, origin)) return false;
    const bool better = empty_ || size.key(objective_) < size_.key(objective_);
    best_ = std::forward<C>(circuit);
    size_ = size;
    empty_ = false;
    if (better) meter_.better(size.count, size.depth);
    return true;
  }

 private:
  bool lasts(Origin origin) const {
    switch (origin) {
      case Origin::certain:
        return true;
      case Origin::lowering_count:
        return objective_ == Objective::count;
      case Origin::lowering_depth:
        return objective_ == Objective::depth;
      case Origin::derived:
        break;
    }
    return false;
  }

  Objective objective_;
  Meter& meter_;
  Ties ties_;
  bool empty_ = true;
  Circuit best_{};
  CircuitSize size_;
};

}  // namespace zelt::braidwerk::internal
