#include "zeltbraidwerk/linear/internal/options.h"

#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "zeltbraidwerk/search/internal/memory.h"
#include "zeltbraidwerk/search/internal/options.h"
#include "zeltbraidwerk/search/internal/task.h"
#include "zeltbraidwerk/search/internal/window.h"

namespace zelt::braidwerk::internal {

namespace {

// Over the square of the qubits, with a search, and without.
constexpr double bytes_of_run = 40;
constexpr double bytes_of_method = 4;

std::vector<std::string> takers(bool LinearMethod::* takes, bool on_device) {
  std::vector<std::string> names;
  for (const LinearMethod& method : linear_method_table()) {
    if (method.*takes) names.emplace_back(method.name);
  }
  if (on_device) names.back() += " without a device";
  return names;
}

void check_range(const char* name, std::optional<int> value, int most) {
  if (!value || (*value >= 1 && *value <= most)) return;
  throw std::invalid_argument(std::string(name) + ": got " + std::to_string(*value) +
                              ", wanted 1 to " + std::to_string(most));
}

void check_method_memory(const LinearMethod& method, int n, const LinearMethodOptions& options) {
  if (n > method.most_qubits) {
    throw synthesis::TooLargeError("matrix: got " + std::to_string(n) + " qubits, wanted at most " +
                                   std::to_string(method.most_qubits) + " for '" +
                                   std::string(method.name) + "'");
  }
  if (method.memory == nullptr) return;
  const std::string got = std::to_string(options.width) + " and " +
                          std::to_string(options.lookahead) + " on " + std::to_string(n) +
                          " qubits";
  const double bytes = method.memory(n, options);
  if (std::pow(options.width, options.lookahead) >= 0x1p31) {  // states are counted by an int
    throw synthesis::TooLargeError(too_large("width, lookahead", got, bytes));
  }
  check_memory("width, lookahead", got, bytes);
}

}  // namespace

LinearMethodOptions method_options(const synthesis::LinearOptions& options) {
  return {options.section, options.width.value_or(1), options.lookahead.value_or(1)};
}

void check_options(const synthesis::LinearOptions& options, int n) {
  check_effort(options);
  const bool on_device = options.device != nullptr;
  check_method(options.method, synthesis::linear_methods(on_device), on_device);
  const bool reach = options.outputs == Outputs::within_reach;
  check_options_of(
      options.method,
      {{"section", options.section.has_value(), takers(&LinearMethod::takes_section, on_device)},
       {"width", options.width.has_value(), takers(&LinearMethod::takes_beam, on_device)},
       {"lookahead", options.lookahead.has_value(), takers(&LinearMethod::takes_beam, on_device)},
       {"steps", options.steps.has_value(), {"auto", "search"}},
       {"start", options.start.has_value(), {"auto", "search"}},
       {"reach", reach, {on_device ? "search" : "search on a device"}}});
  if (options.outputs == Outputs::left_open) {
    throw std::invalid_argument(
        "outputs: got left_open, wanted in_place, within_reach or anywhere");
  }
  if (options.reach < 0) {
    throw std::invalid_argument("reach: got " + std::to_string(options.reach) +
                                ", wanted at least 0");
  }
  check_range("section", options.section, 30);
  check_range("width", options.width, std::numeric_limits<int>::max());
  check_range("lookahead", options.lookahead, 64);
  if (options.method == "search") check_wires("matrix", n);
  check_search_memory("matrix", n, options, n <= most_wires ? bytes_of_run : bytes_of_method);
  if (const LinearMethod* method = on_device ? nullptr : linear_method(options.method)) {
    check_method_memory(*method, n, method_options(options));
  }
}

}  // namespace zelt::braidwerk::internal
