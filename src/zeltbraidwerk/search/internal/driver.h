#pragma once

#include <concepts>

#include "zeltbraidwerk/search/internal/effort.h"
#include "zeltbraidwerk/search/internal/incumbent.h"
#include "zeltbraidwerk/search/internal/rng.h"
#include "zeltbraidwerk/search/internal/schedule.h"
#include "zeltbraidwerk/search/internal/task.h"
#include "zeltbraidwerk/search/internal/walk.h"

namespace zelt::braidwerk::internal {

/// What every search has at hand: its task, draws, effort and the best circuit so far. A family of
/// searches derives from it and adds its own parts.
template <class Circuit>
class SearchBase {
 public:
  const Incumbent<Circuit>& incumbent() const { return incumbent_; }
  Meter& meter() { return meter_; }
  const Meter& meter() const { return meter_; }

 protected:
  SearchBase(const Task& task, const Effort& effort, Ties ties = Ties::first)
      : task_(task),
        rng_(task.seed, task.stream),
        meter_(effort, task.objective),
        incumbent_(task.objective, meter_, ties) {}
  SearchBase(const SearchBase&) = delete;
  SearchBase& operator=(const SearchBase&) = delete;
  ~SearchBase() = default;

  const Task& task_;
  Rng rng_;
  Meter meter_;
  Incumbent<Circuit> incumbent_;
};

/// The answer of a search by its objective, and the best by the other measure beside it: where
/// layers are wanted, circuits of few gates are still good places to walk from.
template <class Circuit>
class SearchByBoth : public SearchBase<Circuit> {
 protected:
  /// `ties` between circuits of equally few gates; of those of few layers the first is kept.
  SearchByBoth(const Task& task, const Effort& effort, Ties ties = Ties::first)
      : SearchBase<Circuit>(task, effort, task.by_depth() ? Ties::first : ties),
        other_(task.by_depth() ? Objective::count : Objective::depth,
               task.by_depth() ? ties : Ties::first) {}

  const Circuit& shortest() const {
    return this->task_.by_depth() ? other_.circuit() : this->incumbent_.circuit();
  }
  const Circuit& shallowest() const {
    return this->task_.by_depth() ? this->incumbent_.circuit() : other_.circuit();
  }
  void offer(const Circuit& circuit, const CircuitSize& size, Origin origin) {
    if (!this->incumbent_.counts(origin)) return;
    other_.offer(circuit, size);
    this->incumbent_.offer(circuit, size, origin);
  }

 private:
  Smallest<Circuit> other_;
};

/// A family of searches.
///   schedule()   how its rounds grow
///   first()      makes at least one circuit, whatever the effort, and proves what it can
///   finished()   whether there is nothing more to find
///   round(r)     one round: new beginnings (beams), and walks from the best circuits. It may end
///                at any step where the effort does; what it offers tells its Origin.
template <class F>
concept Family = requires(F& family, const Round& round) {
  { family.schedule() } -> std::convertible_to<Schedule>;
  family.first();
  { family.finished() } -> std::convertible_to<bool>;
  family.round(round);
};

/// The loop of all searches. What is done in a round depends on the seed and on the rounds before,
/// never on how far the search may go: more effort is more of the same search. Where the search is
/// stopped amid a part that goes on whatever the effort, the best circuit before that part stands;
/// throws Stopped when there was none.
template <Family F>
void run_search(F& family) {
  try {
    family.first();
    Rounds rounds(family.schedule());
    for (; !family.meter().ended() && !family.finished(); rounds.next()) {
      family.round(rounds.now());
    }
  } catch (const Stopped&) {
    if (family.incumbent().empty()) throw;
  }
}

}  // namespace zelt::braidwerk::internal
