#pragma once

#include <nanobind/stl/function.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "convert.h"
#include "zeltbraidwerk/foundations/internal/control.h"
#include "zeltbraidwerk/graphs/graph.h"
#include "zeltbraidwerk/search/internal/runs.h"
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

[[noreturn]] void raise_keyboard_interrupt();

/// Calls of Python from within a search, each with the interpreter lock.
class PythonCalls {
 public:
  explicit PythonCalls(nb::object progress) : progress_(std::move(progress)) {}

  void report(const synthesis::SearchPoint& point);
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
    options.progress = [&](const synthesis::SearchPoint& point) { python.report(point); };
  }
  options.stop = [&] { return python.stop(); };
  try {
    auto result = unwatched([&] { return call(std::as_const(options)); });
    result.stopped = result.stopped || python.interrupted();
    return result;
  } catch (const synthesis::UnfinishedError& error) {
    if (!python.interrupted()) raise_error("UnfinishedError", error.what());
    raise_keyboard_interrupt();
  } catch (const synthesis::TooLargeError& error) {
    raise_error("TooLargeError", error.what());
  } catch (const std::invalid_argument& error) {
    raise_error("OptionError", error.what());
  }
}

/// Calls one kernel, in a thread, so that Ctrl-C can end it: kernel(control) gives a value, or
/// nothing when it was ended. `n` is the number of qubits.
template <class Kernel>
auto interruptible(std::optional<double> budget, int n, Kernel&& kernel) {
  struct Outcome {
    typename std::invoke_result_t<Kernel, const internal::Control&>::value_type value;
    bool stopped;
  };
  internal::RunControl control(budget);
  const internal::Lane lane{
      .method = "one kernel", .runs = 1, .make = [&](int) -> std::optional<internal::MadeCircuit> {
        auto value = kernel(control.control(n));
        if (!value) return std::nullopt;
        return internal::made_circuit({}, std::move(*value));
      }};
  const CommonOptions none{{}, std::nullopt, nb::none()};
  Outcome outcome = synthesized(
      none, synthesis::SynthesisOptions{}, [&](const synthesis::SynthesisOptions& options) {
        internal::BestRun best = internal::best_of_runs({lane}, options, control);
        return Outcome{std::move(best.as<decltype(Outcome::value)>()), best.result.stopped};
      });
  if (outcome.stopped) raise_keyboard_interrupt();
  return std::move(outcome.value);
}

}  // namespace zelt::braidwerk::python
