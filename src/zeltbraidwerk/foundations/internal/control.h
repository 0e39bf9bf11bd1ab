#pragma once

#include <atomic>
#include <chrono>
#include <optional>

namespace zelt::braidwerk::internal {

/// Asked by the kernels that run in this thread, where it is set: true ends them. For callers of
/// public functions, which take no control, that want to be able to stop them.
using StopQuestion = bool (*)();
inline constinit thread_local StopQuestion stop_question = nullptr;

/// What the caller of a long kernel may ask of it. The default asks no more than the thread does.
///
/// A kernel looks at stop_requested() once a step, ends there at the latest, and returns what it
/// has: an unfinished result is marked as such, never half-written.
struct Control {
  using Clock = std::chrono::steady_clock;

  std::optional<Clock::time_point> deadline;
  const std::atomic<bool>* stop = nullptr;
  int max_operations = 1000;  ///< cap of the greedy searches
  StopQuestion question = stop_question;

  /// The same with half of the time that is left.
  Control for_half_the_time() const {
    Control half = *this;
    const auto now = Clock::now();
    if (half.deadline) half.deadline = now + (*half.deadline - now) / 2;
    return half;
  }

  bool stop_requested() const {
    if (stop != nullptr && stop->load(std::memory_order_relaxed)) return true;
    if (question != nullptr && question()) return true;
    return deadline && Clock::now() >= *deadline;
  }
};

}  // namespace zelt::braidwerk::internal
