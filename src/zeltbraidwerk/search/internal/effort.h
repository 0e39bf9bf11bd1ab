#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>

#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/search/search_effort.h"

namespace zelt::braidwerk::internal {

/// A moment at which a search had found a better circuit.
struct SearchPoint {
  double seconds = 0;  ///< since the search began
  std::uint64_t steps = 0;
  int count = 0;
  int depth = 0;
};

/// How far a search may go: so many steps, to the deadline, or until it is stopped. A step is one
/// window of a walk or one state of a beam.
///
/// What a search does at a step depends on its seed and on the steps before, never on how far it
/// may go: more effort is more of the same search, so its best is never worse.
struct Effort {
  Control control;
  std::uint64_t steps = std::numeric_limits<std::uint64_t>::max();
  std::function<void(const SearchPoint&)> on_better;
};

/// From now on.
inline Effort limits_of(const synthesis::SearchEffort& effort) {
  Effort limits;
  limits.steps = effort.steps;
  if (effort.seconds < 1e9) {
    limits.control.deadline =
        Control::Clock::now() + std::chrono::duration_cast<Control::Clock::duration>(
                                    std::chrono::duration<double>(effort.seconds));
  }
  return limits;
}

/// The effort of one run as it is spent.
class Meter {
 public:
  explicit Meter(const Effort& effort) : effort_(&effort), start_(Control::Clock::now()) {}

  /// Counts a step; false when the search is to end. The clock is looked at once in 32 steps, so a
  /// step that takes longer than microseconds also asks ended().
  bool step() {
    ++steps_;
    if ((steps_ & 31) == 0) ended();
    if (steps_ >= effort_->steps) ended_ = true;
    return !ended_;
  }

  /// Looks at the clock. Once true, always true.
  bool ended() {
    if (!ended_) ended_ = steps_ >= effort_->steps || effort_->control.stop_requested();
    return ended_;
  }

  std::uint64_t steps() const { return steps_; }
  double seconds() const {
    return std::chrono::duration<double>(Control::Clock::now() - start_).count();
  }
  const Control& control() const { return effort_->control; }

  void better(int count, int depth) const {
    if (effort_->on_better) effort_->on_better({seconds(), steps_, count, depth});
  }

 private:
  const Effort* effort_;
  Control::Clock::time_point start_;
  std::uint64_t steps_ = 0;
  bool ended_ = false;
};

}  // namespace zelt::braidwerk::internal
