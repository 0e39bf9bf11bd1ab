#include "checks.h"

#include <nanobind/nanobind.h>

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "synthesize.h"
#include "zeltbraidwerk/search/internal/memory.h"
#include "zeltbraidwerk/search/memory_limit.h"

namespace zelt::braidwerk::python {

namespace nb = nanobind;

namespace {

std::string formatted(const char* format, va_list arguments) {
  char text[512];
  std::vsnprintf(text, sizeof text, format, arguments);
  return text;
}

}  // namespace

void raise_value_error(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string message = formatted(format, arguments);
  va_end(arguments);
  throw nb::value_error(message.c_str());
}

void raise_index_error(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string message = formatted(format, arguments);
  va_end(arguments);
  throw nb::index_error(message.c_str());
}

void raise_too_large(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string message = formatted(format, arguments);
  va_end(arguments);
  raise_error("TooLargeError", message.c_str());
}

void check_index(int value, int size, const char* name) {
  if (value >= 0 && value < size) return;
  if (size <= 0) raise_index_error("%s: got %d, wanted none, since the size is 0", name, value);
  raise_index_error("%s: got %d, wanted 0 to %d", name, value, size - 1);
}

void check_at_least(int value, int least, const char* name) {
  if (value < least) raise_value_error("%s: got %d, wanted at least %d", name, value, least);
}

void check_at_most(int value, int most, const char* name) {
  if (value > most) raise_value_error("%s: got %d, wanted at most %d", name, value, most);
}

void check_same(std::size_t got, std::size_t wanted, const char* name, const char* what) {
  if (got != wanted) raise_value_error("%s: got %zu %s, wanted %zu", name, got, what, wanted);
}

void check_permutation(const std::vector<int>& values, int n, const char* name) {
  check_size(n, "n");
  check_same(values.size(), static_cast<std::size_t>(n), name, "entries");
  check_indices(values, n, name);
  check_distinct(values, name);
}

void check_distinct(const std::vector<int>& values, const char* name) {
  std::vector<int> sorted = values;
  std::ranges::sort(sorted);
  const auto twice = std::ranges::adjacent_find(sorted);
  if (twice != sorted.end()) raise_value_error("%s: got %d twice, wanted it once", name, *twice);
}

void check_gates(const std::vector<std::tuple<int, int>>& gates, int n) {
  for (const auto& [control, target] : gates) {
    check_index(control, n, "control");
    check_index(target, n, "target");
  }
}

void check_two_qubits(int a, int b, int n) {
  check_index(a, n, "a");
  check_index(b, n, "b");
  if (a == b) raise_value_error("a, b: got the same qubit, %d, wanted two", a);
}

void check_gate(const structures::Gate& gate, int n) {
  const bool two = gate.name == "CNOT" || gate.name == "CSIGN" || gate.name == "CZ";
  const bool rotation =
      gate.name == "RX" || gate.name == "RY" || gate.name == "RZ" || gate.name == "PH";
  if (gate.qbits.size() < (two ? 2U : 1U) && gate.name != "XX") {
    raise_value_error("gate %.60s: got %zu qubits", gate.name.c_str(), gate.qbits.size());
  }
  if (two && gate.qbits[0] == gate.qbits[1]) {
    raise_value_error("gate %.60s: got qubit %d twice", gate.name.c_str(), gate.qbits[0]);
  }
  if (rotation && gate.params.empty()) {
    raise_value_error("gate %.60s: got no angle", gate.name.c_str());
  }
  check_indices(gate.qbits, n, "qubit");
}

void check_circuit(const std::vector<structures::Gate>& circuit, int n) {
  for (const structures::Gate& gate : circuit) check_gate(gate, n);
}

void check_tableau(const structures::OperatorTableau& tableau, int n, const char* name) {
  check_same(tableau.nbqbits, n, name);
  if (tableau.data.empty()) raise_value_error("%s: got one without entries", name);
}

void check_memory(double bytes, const char* name, long long value) {
  if (bytes <= synthesis::memory_limit()) return;
  raise_too_large("%s", internal::too_large(name, std::to_string(value), bytes).c_str());
}

void check_square(int n, const char* name, double bytes) {
  check_size(n, name);
  check_memory(static_cast<double>(n) * n * bytes, name, n);
}

void check_beam(int width, int depth, int level, double choices, double bytes) {
  check_at_least(width, 1, "width");
  const double kept = std::clamp(choices, 1.0, static_cast<double>(width));
  const double states = std::pow(kept, std::max(level, 0));
  if (states > 2147483647.0) {
    raise_too_large("width, depth: got %d and %d, which makes %.3g states, wanted fewer than 2^31",
                    width, depth, states);
  }
  check_memory(states * bytes, "depth", depth);
}

}  // namespace zelt::braidwerk::python
