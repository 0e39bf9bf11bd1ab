#pragma once

#include <nanobind/nanobind.h>

#include <chrono>
#include <mutex>
#include <thread>
#include <type_traits>
#include <utility>

#include "zeltbraidwerk/foundations/internal/control.h"

/// \file
/// Calls of the library without the interpreter lock, which Ctrl-C ends.
namespace zelt::braidwerk::python {

/// Whether a signal has raised an exception, which is Python's current one then: Interrupted for
/// Ctrl-C.
bool signal_raised() noexcept;

/// While it lives, kernels that run in this thread look for signals of Python, at their Control and
/// at each stop_point(). Made and destroyed with the interpreter lock.
class SignalWatch {
 public:
  SignalWatch();
  ~SignalWatch();
  SignalWatch(const SignalWatch&) = delete;
  SignalWatch& operator=(const SignalWatch&) = delete;

  /// Raises what a signal has raised: Interrupted for Ctrl-C. A kernel that was ended by it has no
  /// result.
  void raise();

 private:
  internal::StopQuestion kept_;
  internal::StopScope scope_;  // asks the question that stands when it is made
};

/// Runs f without the interpreter lock; f touches no Python object, and looks for signals itself.
template <class F>
auto unwatched(F&& f) {
  const nanobind::gil_scoped_release release;
  return std::forward<F>(f)();
}

/// The same, and Ctrl-C ends it where its kernels look at a Control or come to a stop_point().
template <class F>
auto unlocked(F&& f) {
  SignalWatch watch;
  try {
    if constexpr (std::is_void_v<decltype(f())>) {
      unwatched(f);
      watch.raise();
    } else {
      auto result = unwatched(f);
      watch.raise();
      return result;
    }
  } catch (const nanobind::python_error&) {
    throw;
  } catch (...) {
    watch.raise();  // an ended kernel may fail for that alone
    throw;
  }
}

/// Recursive, since a handler of signals may call the library from within a kernel.
inline std::recursive_mutex shared_streams;

/// Waits for the call of another thread to end, or for Ctrl-C.
inline std::unique_lock<std::recursive_mutex> lock_shared_streams() {
  std::unique_lock lock(shared_streams, std::try_to_lock);
  while (!lock.owns_lock()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    internal::stop_point();
    lock.try_lock();
  }
  return lock;
}

/// As unlocked, for what draws from the library's shared generator or writes to standard output:
/// one call at a time.
template <class F>
auto unlocked_alone(F&& f) {
  return unlocked([&] {
    const auto lock = lock_shared_streams();
    return std::forward<F>(f)();
  });
}

}  // namespace zelt::braidwerk::python
