#include "zeltbraidwerk/search/internal/options.h"

#include <algorithm>
#include <stdexcept>
#include <thread>

#include "zeltbraidwerk/search/internal/memory.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

using synthesis::SynthesisOptions;

namespace {

[[noreturn]] void refuse(const std::string& name, const std::string& got,
                         const std::string& wanted) {
  throw std::invalid_argument(name + ": got " + got + ", wanted " + wanted);
}

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

}  // namespace

void check_effort(const SynthesisOptions& options) {
  if (options.restarts && *options.restarts < 1) {
    refuse("restarts", std::to_string(*options.restarts), "at least 1");
  }
  if (options.budget && !(*options.budget > 0)) {
    refuse("budget", std::to_string(*options.budget), "a positive number of seconds");
  }
  if (options.jobs < 0 || options.jobs > 1024) {
    refuse("jobs", std::to_string(options.jobs), "1 to 1024, or 0 for one per core");
  }
}

void check_method(const std::string& method, const std::vector<std::string>& known,
                  bool on_device) {
  if (std::ranges::find(known, method) != known.end()) return;
  refuse("method", "'" + method + "'",
         "one of " + joined(known) + (on_device ? " on a device" : ""));
}

void check_wires(const char* name, int qubits) {
  if (qubits <= most_wires) return;
  throw synthesis::TooLargeError(std::string(name) + ": got " + std::to_string(qubits) +
                                 " qubits, wanted at most " + std::to_string(most_wires));
}

void check_search_memory(const char* name, int qubits, const SynthesisOptions& options,
                         double square, const SearchItems& items) {
  const double wires = qubits;
  const double each = square * wires * wires + items.bytes * items.count;
  std::string got = std::to_string(qubits) + " qubits";
  if (items.count > 0) got = std::to_string(items.count) + " " + items.name + " on " + got;
  if (threads(options) > 1) got += " and " + std::to_string(threads(options)) + " jobs";
  check_memory(name, got, each * threads(options));
}

void check_options_of(const std::string& method, const std::vector<OptionOfSome>& options) {
  for (const auto& [name, given, takers] : options) {
    if (!given || std::ranges::find(takers, method) != takers.end()) continue;
    throw std::invalid_argument(std::string(name) + ": not an option of method '" + method +
                                "', but of " + joined(takers));
  }
}

void check_search_options(const SynthesisOptions& options, const std::vector<std::string>& takers) {
  check_options_of(options.method, {{"restarts", options.restarts.has_value(), takers},
                                    {"budget", options.budget.has_value(), takers},
                                    {"steps", options.steps.has_value(), takers},
                                    {"start", options.start.has_value(), takers}});
}

void refuse_any_start(const SynthesisOptions& options) {
  if (options.start) refuse("start", "a circuit", "none for this family");
}

std::optional<std::uint64_t> steps_of_search(const SynthesisOptions& options) {
  if (!options.steps && !options.budget) return default_search_steps;
  return options.steps;
}

int runs_of_search(const SynthesisOptions& options) {
  if (options.restarts) return *options.restarts;
  return steps_of_search(options) ? 1 : threads(options);
}

int threads(const SynthesisOptions& options) {
  if (options.jobs > 0) return options.jobs;
  return static_cast<int>(std::max(std::thread::hardware_concurrency(), 1U));
}

}  // namespace zelt::braidwerk::internal
