#pragma once

#include <utility>

#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/task.h"

namespace zelt::braidwerk::internal {

/// How a search came by a circuit that it offers. It decides whether the circuit may still be taken
/// when the effort has ended: only where a search that goes on would come to one at least as good.
enum class Origin {
  certain,         ///< with more effort it would be offered all the same
  lowering_count,  ///< the shortest yet of a walk: with more effort, it or one with fewer gates
  lowering_depth,  ///< the same of a walk that lowers the layers
  derived,         ///< made from where the search stood: with more effort, from somewhere else
};

/// Which of two circuits of the same size is kept.
enum class Ties {
  first,
  latest,  ///< so that a search goes on from elsewhere
};

/// The smallest circuit of those offered, by one measure and then by the other.
template <class Circuit>
class Smallest {
 public:
  explicit Smallest(Objective objective, Ties ties = Ties::first)
      : objective_(objective), ties_(ties) {}

  bool empty() const { return empty_; }
  const Circuit& circuit() const { return circuit_; }
  const CircuitSize& size() const { return size_; }

  bool is_smaller(const CircuitSize& size) const {
    return empty_ || size.key(objective_) < size_.key(objective_);
  }
  /// True when it was taken.
  template <class C>
  bool offer(C&& circuit, const CircuitSize& size) {
    if (!is_smaller(size) && !(ties_ == Ties::latest && size == size_)) return false;
    circuit_ = std::forward<C>(circuit);
    size_ = size;
    empty_ = false;
    return true;
  }

 private:
  Objective objective_;
  Ties ties_;
  bool empty_ = true;
  Circuit circuit_{};
  CircuitSize size_;
};

/// The answer of a search so far. This is the only place that knows the rule that more effort is
/// never worse. The meter hears of every smaller circuit, not of ties; it must outlive this.
template <class Circuit>
class Incumbent {
 public:
  Incumbent(Objective objective, Meter& meter, Ties ties = Ties::first)
      : lasting_(objective == Objective::count ? Origin::lowering_count : Origin::lowering_depth),
        meter_(meter),
        answer_(objective, ties) {}

  bool empty() const { return answer_.empty(); }
  const Circuit& circuit() const { return answer_.circuit(); }
  const CircuitSize& size() const { return answer_.size(); }

  /// Whether a circuit of this origin still counts. The first one always does.
  bool counts(Origin origin) const {
    return empty() || origin == Origin::certain || origin == lasting_ || !meter_.ended();
  }
  /// True when it was taken.
  template <class C>
  bool offer(C&& circuit, const CircuitSize& size, Origin origin) {
    if (!counts(origin)) return false;
    const bool smaller = answer_.is_smaller(size);
    const bool taken = answer_.offer(std::forward<C>(circuit), size);
    if (smaller) meter_.better(size.count, size.depth);
    return taken;
  }

 private:
  Origin lasting_;
  Meter& meter_;
  Smallest<Circuit> answer_;
};

}  // namespace zelt::braidwerk::internal
