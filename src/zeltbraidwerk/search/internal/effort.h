#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/search/internal/task.h"
#include "zeltbraidwerk/search/search_point.h"

namespace zelt::braidwerk::internal {

using synthesis::SearchPoint;

/// Proven: no circuit of a problem has fewer gates on two wires, and none has fewer layers of them.
/// It depends on the problem alone, never on a seed or on the effort.
struct LowerBound {
  int count = 0;
  int depth = 0;

  /// A bound holds as well as another one.
  void raise(const LowerBound& other) {
    count = std::max(count, other.count);
    depth = std::max(depth, other.depth);
  }
};

/// How far a search may go: a number of steps, to a deadline, or until it is stopped. A step is one
/// window of a walk or one state of a beam.
///
/// What a search does at a step depends on its seed and on the steps before, never on how far it
/// may go: more effort is more of the same search, so its best is never worse.
struct Effort {
  Control control;
  std::uint64_t steps = std::numeric_limits<std::uint64_t>::max();
  std::function<void(const SearchPoint&)> on_better;
  std::function<void(const LowerBound&)> on_bound;  ///< hears of it whenever it may have risen
  bool past_bound = false;  ///< goes on where nothing better is possible, to see that it is so
};

/// The effort of one run as it is spent.
///
/// A run also ends when it cannot get better. When the best circuit that the meter was told of
/// meets the bound in what is searched for, gates or layers, the run goes on to twice the
/// steps it has made and `polish` more, as the other measure may still fall. When both are met
/// it ends at once. So the end depends on the seed and the steps alone, and where the effort ends
/// before, nothing has changed.
class Meter {
 public:
  explicit Meter(const Effort& effort, Objective objective = Objective::count)
      : effort_(effort),
        objective_(objective),
        limit_(effort.steps),
        start_(Control::Clock::now()) {}

  /// Steps after twice those made, when only one measure meets its bound.
  static constexpr std::uint64_t polish = 1000;

  /// Counts a step; false when the search is to end. The clock is looked at once in 32 steps, so a
  /// step that takes longer than microseconds also asks ended().
  bool step() {
    ++steps_;
    if ((steps_ & 31) == 0) ended();
    if (steps_ >= limit_) ended_ = true;
    return !ended_;
  }

  /// Counts steps that another search made in the place of this one.
  void charge(std::uint64_t steps) {
    steps_ += steps;
    ended();
  }
  /// Steps that are left.
  std::uint64_t left() const { return limit_ - std::min(limit_, steps_); }

  /// Looks at the clock. Once true, always true.
  bool ended() {
    if (!ended_) ended_ = steps_ >= limit_ || effort_.control.stop_requested();
    return ended_;
  }

  const Effort& effort() const { return effort_; }
  /// Leaves all of the effort to another search, which counts its own steps; this one ends.
  Effort give_all() {
    Effort given = effort_;
    effort_.steps = limit_ = 0;
    return given;
  }
  /// The same for half of the steps, and of the time that is left.
  Effort give_half() {
    Effort given = effort_;
    given.steps = effort_.steps / 2;
    effort_.steps -= given.steps;
    limit_ = std::min(limit_, effort_.steps);
    effort_.control = effort_.control.for_half_the_time();
    return given;
  }

  std::uint64_t steps() const { return steps_; }
  double seconds() const {
    return std::chrono::duration<double>(Control::Clock::now() - start_).count();
  }
  /// Seconds that are left, where they and no number of steps end it.
  std::optional<double> seconds_left() const {
    const std::optional<Control::Clock::time_point>& deadline = effort_.control.deadline;
    if (!deadline || effort_.steps != Effort{}.steps) return std::nullopt;
    return std::chrono::duration<double>(*deadline - Control::Clock::now()).count();
  }
  const Control& control() const { return effort_.control; }

  /// The best circuit so far has become better.
  void better(int count, int depth) {
    best_ = {count, depth};
    if (effort_.on_better) effort_.on_better({seconds(), steps_, count, depth});
    look_at_bound();
  }

  void prove(const LowerBound& bound) {
    bound_.raise(bound);
    if (effort_.on_bound) effort_.on_bound(bound_);
    look_at_bound();
  }
  const LowerBound& bound() const { return bound_; }

  /// Whether the best circuit can get better in neither measure.
  bool proven() const { return best_.count <= bound_.count && best_.depth <= bound_.depth; }

 private:
  void look_at_bound() {
    const bool met =
        objective_ == Objective::depth ? best_.depth <= bound_.depth : best_.count <= bound_.count;
    if (met && !effort_.past_bound)
      limit_ = std::min(limit_, proven() ? steps_ : 2 * steps_ + polish);
  }

  static constexpr int none = std::numeric_limits<int>::max();

  Effort effort_;
  Objective objective_;
  std::uint64_t limit_;
  Control::Clock::time_point start_;
  std::uint64_t steps_ = 0;
  LowerBound bound_;
  LowerBound best_{none, none};
  bool ended_ = false;
};

}  // namespace zelt::braidwerk::internal
