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
  /// Set with `stop` where the caller gives up, and not at a deadline.
  const std::atomic<bool>* given_up = nullptr;

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

/// What stop_point() throws. Whoever opened the scope catches it; it never leaves the library.
struct Stopped {};

/// While one is alive, stop_point() on this thread looks at its flag. It is for loops that go on
/// whatever the effort (first circuits, tables, closing) and so have no Control of their own: they
/// are left by an exception, and what they were making is lost. Without a scope nothing is looked
/// at.
class StopScope {
 public:
  explicit StopScope(const std::atomic<bool>* stop) : StopScope(Control{{}, stop}, false) {}
  /// With `in_time` the deadline ends it as well: where there is something else to fall back on.
  StopScope(const Control& control, bool in_time) : outer_(current_) {
    own_ = outer_ == nullptr ? Control{} : *outer_;
    if (control.stop != nullptr) own_.stop = control.stop;
    if (in_time && control.deadline) own_.deadline = control.deadline;
    current_ = &own_;
  }
  ~StopScope() { current_ = outer_; }
  StopScope(const StopScope&) = delete;
  StopScope& operator=(const StopScope&) = delete;

  /// Takes the scopes of this thread away for as long as it is alive: what has been found is
  /// written down to the end.
  class Suspended {
   public:
    Suspended() : outer_(current_) { current_ = nullptr; }
    ~Suspended() { current_ = outer_; }
    Suspended(const Suspended&) = delete;
    Suspended& operator=(const Suspended&) = delete;

   private:
    const Control* outer_;
  };

  static bool is_over() { return current_ != nullptr && current_->stop_requested(); }

 private:
  static inline thread_local const Control* current_ = nullptr;
  Control own_;
  const Control* outer_;
};

/// Throws Stopped when the scope of this thread is over. It takes some nanoseconds: once in some
/// microseconds is often enough.
inline void stop_point() {
  if (StopScope::is_over()) throw Stopped();
}

/// Throws Stopped when the question that the caller has set in this thread ends it. Searches set
/// none: so it may stand in what they call to write down what they found.
inline void question_point() {
  if (stop_question != nullptr && stop_question()) throw Stopped();
}

}  // namespace zelt::braidwerk::internal
