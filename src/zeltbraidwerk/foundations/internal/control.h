#pragma once

#include <atomic>
#include <chrono>
#include <optional>

namespace zelt::braidwerk::internal {

/// What the caller of a long kernel may ask of it. The default asks for nothing.
///
/// A kernel looks at stop_requested() once a step, ends there at the latest, and returns what it
/// has: an unfinished result is marked as such, never half-written.
struct Control {
  using Clock = std::chrono::steady_clock;

  std::optional<Clock::time_point> deadline;
  const std::atomic<bool>* stop = nullptr;
  int max_operations = 1000;  ///< cap of the greedy searches

  bool stop_requested() const {
    if (stop != nullptr && stop->load(std::memory_order_relaxed)) return true;
    return deadline && Clock::now() >= *deadline;
  }
};

}  // namespace zelt::braidwerk::internal
