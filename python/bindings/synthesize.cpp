#include "synthesize.h"

#include <cstdint>
#include <tuple>
#include <vector>

#include "module.h"
#include "zeltbraidwerk/graphs/internal/bit_graph.h"
#include "zeltbraidwerk/search/internal/memory.h"
#include "zeltbraidwerk/search/memory_limit.h"

namespace zelt::braidwerk::python {

using nb::literals::operator""_a;
using synthesis::Objective;
using synthesis::Outputs;
using synthesis::SearchPoint;
using synthesis::SynthesisResult;

void raise_error(const char* name, const char* text) {
  const nb::object kind = nb::module_::import_("zeltbraidwerk.errors").attr(name);
  PyErr_SetString(kind.ptr(), text);
  throw nb::python_error();
}

void raise_keyboard_interrupt() {
  PyErr_SetNone(PyExc_KeyboardInterrupt);
  throw nb::python_error();
}

void PythonCalls::take(nb::python_error& error) {
  if (!error.matches(PyExc_KeyboardInterrupt)) throw std::move(error);
  interrupted_ = true;
}

void PythonCalls::report(const SearchPoint& point) {
  if (interrupted_) return;
  const nb::gil_scoped_acquire lock;
  try {
    progress_(point.seconds, point.count, point.depth);
  } catch (nb::python_error& error) {
    take(error);
  }
}

bool PythonCalls::stop() {
  if (interrupted_) return true;
  const nb::gil_scoped_acquire lock;
  try {
    if (PyErr_CheckSignals() != 0) throw nb::python_error();
    // Runs the interpreter, which raises what another thread has sent to this one.
    nb::module_::import_("zeltbraidwerk._search").attr("look_for_exceptions")();
  } catch (nb::python_error& error) {
    take(error);
  }
  return interrupted_;
}

namespace {

using KnownParts = std::tuple<std::vector<structures::Gate>, std::vector<int>>;

std::vector<std::tuple<double, int, int>> trace_of(const SynthesisResult& result) {
  std::vector<std::tuple<double, int, int>> trace;
  for (const SearchPoint& point : result.trace) {
    trace.emplace_back(point.seconds, point.count, point.depth);
  }
  return trace;
}

}  // namespace

void bind_synthesize(nb::module_& m) {
  m.def("_memory_limit", &synthesis::memory_limit);
  m.def("_memory_limit_as_set", &synthesis::memory_limit_as_set);
  m.def("_set_memory_limit", &synthesis::set_memory_limit, "limit"_a);
  m.def("_too_large", &internal::too_large, "name"_a, "got"_a, "bytes"_a);
  nb::enum_<Objective>(m, "_Objective")
      .value("count", Objective::count)
      .value("depth", Objective::depth);
  nb::enum_<Outputs>(m, "_Outputs")
      .value("in_place", Outputs::in_place)
      .value("within_reach", Outputs::within_reach)
      .value("anywhere", Outputs::anywhere)
      .value("left_open", Outputs::left_open);
  nb::class_<CommonOptions>(m, "_SynthesisOptions")
      .def(
          "__init__",
          [](CommonOptions* self, std::string method, Objective objective, Outputs outputs,
             std::optional<ArrayLike> adjacency, std::uint64_t seed, std::optional<int> restarts,
             std::optional<double> budget, std::optional<std::uint64_t> steps, int jobs,
             nb::object progress, std::optional<KnownParts> start) {
            new (self) CommonOptions{{}, std::nullopt, std::move(progress)};
            synthesis::SynthesisOptions& options = self->options;
            options.method = std::move(method);
            options.objective = objective;
            options.outputs = outputs;
            options.seed = seed;
            options.restarts = restarts;
            options.budget = budget;
            options.steps = steps;
            options.jobs = jobs;
            if (start) {
              options.start = {std::move(std::get<0>(*start)), std::move(std::get<1>(*start))};
            }
            if (adjacency) {
              const internal::BitGraph graph = to_graph(*adjacency);
              self->device.emplace(graph.size());
              graph.unpack_into(*self->device);
            }
          },
          "method"_a, "objective"_a, "outputs"_a, "adjacency"_a.none(), "seed"_a,
          "restarts"_a.none(), "budget"_a.none(), "steps"_a.none(), "jobs"_a, "progress"_a.none(),
          "start"_a.none());
  nb::class_<SynthesisResult>(m, "_SynthesisResult")
      .def_ro("method", &SynthesisResult::method)
      .def_ro("permutation", &SynthesisResult::permutation)
      .def_ro("count", &SynthesisResult::count)
      .def_ro("depth", &SynthesisResult::depth)
      .def_ro("seed", &SynthesisResult::seed)
      .def_ro("runs", &SynthesisResult::runs)
      .def_prop_ro("trace", trace_of)
      .def_ro("least_count", &SynthesisResult::least_count)
      .def_ro("least_depth", &SynthesisResult::least_depth)
      .def_ro("stopped", &SynthesisResult::stopped);
}

}  // namespace zelt::braidwerk::python
