#pragma once

#include <nanobind/stl/function.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <optional>
#include <string>
#include <utility>

#include "convert.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/graphs/graph.h"
#include "zeltbraidwerk/search/synthesis_options.h"

/// \file
/// What the bindings of all synthesize functions share: options in, results out, and calls of
/// Python from within a search.
namespace zelt::braidwerk::python {

/// The options of all families as Python gives them. Its `stop` is Ctrl-C.
struct CommonOptions {
  synthesis::SynthesisOptions options;
  std::optional<structures::Graph> device;
  nb::object progress;
};

/// Raises the class of zeltbraidwerk.errors.
[[noreturn]] void raise_error(const char* name, const char* text);

/// Calls of Python from within a search, each with the interpreter lock.
class PythonCalls {
 public:
  explicit PythonCalls(nb::object progress) : progress_(std::move(progress)) {}

  void tell(const synthesis::SearchPoint& point);
  /// True from Ctrl-C on. Throws what other signals raise.
  bool stop();

  bool interrupted() const { return interrupted_; }

 private:
  void take(nb::python_error& error);

  nb::object progress_;
  bool interrupted_ = false;
};

/// Calls a synthesize function without the interpreter lock: call(options). Errors of the library
/// become those of the package; Ctrl-C gives a result that is stopped, or KeyboardInterrupt where
/// there is none.
template <class Options, class Call>
auto synthesized(const CommonOptions& common, Options options, Call&& call) {
  PythonCalls python(common.progress);
  static_cast<synthesis::SynthesisOptions&>(options) = common.options;
  if (common.device) options.device = &*common.device;
  if (!common.progress.is_none()) {
    options.progress = [&](const synthesis::SearchPoint& point) { python.tell(point); };
  }
  options.stop = [&] { return python.stop(); };
  try {
    auto result = unlocked([&] { return call(std::as_const(options)); });
    result.stopped = result.stopped || python.interrupted();
    return result;
  } catch (const synthesis::UnfinishedError& error) {
    if (!python.interrupted()) raise_error("UnfinishedError", error.what());
    PyErr_SetNone(PyExc_KeyboardInterrupt);
    throw nb::python_error();
  } catch (const synthesis::TooLargeError& error) {
    raise_error("TooLargeError", error.what());
  } catch (const std::invalid_argument& error) {
    raise_error("OptionError", error.what());
  }
}

}  // namespace zelt::braidwerk::python
