#include "unlocked.h"

#include <chrono>
#include <optional>

namespace zelt::braidwerk::python {

namespace nb = nanobind;

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds between_looks(20);

thread_local Clock::time_point next_look;
thread_local std::optional<nb::python_error> raised;

bool signal_came() {
  if (raised) return true;
  const Clock::time_point now = Clock::now();
  if (now < next_look) return false;
  next_look = now + between_looks;
  const nb::gil_scoped_acquire lock;
  if (PyErr_CheckSignals() == 0) return false;
  raised.emplace();
  return true;
}

void set_interrupted() {
  const nb::object kind = nb::module_::import_("zeltbraidwerk.errors").attr("Interrupted");
  PyErr_SetString(kind.ptr(), "interrupted");
}

}  // namespace

bool signal_raised() noexcept {
  if (PyErr_CheckSignals() == 0) return false;
  if (PyErr_ExceptionMatches(PyExc_KeyboardInterrupt) != 0) {
    PyErr_Clear();
    set_interrupted();
  }
  return true;
}

SignalWatch::SignalWatch()
    : kept_(std::exchange(internal::stop_question, signal_came)),
      scope_(internal::Control(), false) {
  next_look = Clock::now() + between_looks;
}

SignalWatch::~SignalWatch() {
  internal::stop_question = kept_;
  if (kept_ == nullptr) raised.reset();
}

void SignalWatch::raise() {
  if (!raised) return;
  nb::python_error error = std::move(*raised);
  raised.reset();
  if (!error.matches(PyExc_KeyboardInterrupt)) throw error;
  set_interrupted();
  throw nb::python_error();
}

}  // namespace zelt::braidwerk::python
