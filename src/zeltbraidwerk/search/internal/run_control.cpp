#include "zeltbraidwerk/search/internal/run_control.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <utility>

namespace zelt::braidwerk::internal {

RunControl::RunControl(std::optional<double> budget) {
  if (!budget) return;
  // Longer than a year is no deadline, and would not fit the clock.
  const std::chrono::duration<double> left(std::min(*budget, 3.2e7));
  deadline_ = start_ + std::chrono::duration_cast<Control::Clock::duration>(left);
}

Control RunControl::control(int n) const {
  // Greedy searches rarely need more than n^2 additions; in a circle they would go on for ever.
  const long cap = 1000 + static_cast<long>(n) * n;
  Control control{deadline_, &stop_, static_cast<int>(std::min(cap, 1L << 30))};
  control.given_up = &given_up_;
  return control;
}

Control RunControl::control_of_run(int n, int run) const {
  Control own = control(n);
  if (run == 0) own.deadline.reset();
  return own;
}

Effort RunControl::effort(std::optional<std::uint64_t> steps) {
  Effort result;
  result.control = control(0);
  result.steps = steps.value_or(std::numeric_limits<std::uint64_t>::max());
  result.on_better = [this](const SearchPoint& point) { report(point); };
  result.on_bound = [this](const LowerBound& proven) {
    const std::lock_guard lock(mutex_);
    bound_.raise(proven);
  };
  return result;
}

double RunControl::seconds() const {
  return std::chrono::duration<double>(Control::Clock::now() - start_).count();
}

void RunControl::report(SearchPoint point) {
  point.seconds = seconds();
  const std::lock_guard lock(mutex_);
  points_.push_back(point);
  has_found_ = true;
}

std::vector<SearchPoint> RunControl::news() {
  const std::lock_guard lock(mutex_);
  return std::exchange(points_, {});
}

LowerBound RunControl::bound() {
  const std::lock_guard lock(mutex_);
  return bound_;
}

}  // namespace zelt::braidwerk::internal
