#pragma once

#include <algorithm>
#include <cstddef>
#include <ranges>
#include <tuple>
#include <utility>
#include <vector>

#include "zeltbraidwerk/foundations/gate.h"
#include "zeltbraidwerk/foundations/operator_tableau.h"

/// \file
/// What the functions of the library take for granted: sizes that fit together, indices in their
/// range, and memory that is there. The bindings call these before the library, which checks none
/// of it. Every text names the argument, what came and what is wanted.
namespace zelt::braidwerk::python {

/// Raise with a text in the manner of printf.
[[noreturn, gnu::format(printf, 1, 2)]] void raise_value_error(const char* format, ...);
[[noreturn, gnu::format(printf, 1, 2)]] void raise_index_error(const char* format, ...);
[[noreturn, gnu::format(printf, 1, 2)]] void raise_too_large(const char* format, ...);

/// Raises IndexError unless 0 <= value < size.
void check_index(int value, int size, const char* name);
/// The same for each value of a vector or set.
template <std::ranges::range Values>
void check_indices(const Values& values, int size, const char* name) {
  for (const int value : values) check_index(value, size, name);
}

/// Raise ValueError outside of the range.
void check_at_least(int value, int least, const char* name);
void check_at_most(int value, int most, const char* name);
/// A number of qubits, rows or columns: at least 0.
inline void check_size(int value, const char* name) {
  check_at_least(value, 0, name);
}
/// Raises ValueError unless the sizes are equal; `what` is counted, in the plural.
void check_same(std::size_t got, std::size_t wanted, const char* name, const char* what);
inline void check_same(int got, int wanted, const char* name, const char* what = "qubits") {
  check_same(static_cast<std::size_t>(got), static_cast<std::size_t>(wanted), name, what);
}
/// Raises ValueError unless the values are 0 to n-1 in some order.
void check_permutation(const std::vector<int>& values, int n, const char* name);
/// Raises ValueError for a value that comes twice.
void check_distinct(const std::vector<int>& values, const char* name);

/// Raises IndexError for a qubit beyond n.
void check_gates(const std::vector<std::tuple<int, int>>& gates, int n);
/// The same, and ValueError where both are one qubit.
void check_two_qubits(int a, int b, int n);
/// Raises IndexError for a qubit beyond n, ValueError for too few qubits, one that comes twice, or
/// a missing angle.
void check_gate(const structures::Gate& gate, int n);
/// The same for each gate.
void check_circuit(const std::vector<structures::Gate>& circuit, int n);
/// Raises ValueError for a tableau on another number of qubits, or without entries.
void check_tableau(const structures::OperatorTableau& tableau, int n, const char* name);

/// Raises TooLargeError where a call would take more bytes than it may; `name` has that value.
void check_memory(double bytes, const char* name, long long value);
/// A square table of n rows, which the function makes: so many bytes per entry.
void check_square(int n, const char* name, double bytes);
/// A beam that keeps `width` of the `choices` children of each state, `depth` levels deep; in
/// memory are the states of some level, with so many bytes each. Raises ValueError for a width
/// below 1, TooLargeError for too many states.
void check_beam(int width, int depth, int level, double choices, double bytes);

}  // namespace zelt::braidwerk::python
