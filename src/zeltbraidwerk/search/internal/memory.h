#pragma once

#include <string>

/// \file
/// The one place that refuses what would take too much memory.
namespace zelt::braidwerk::internal {

/// Throws TooLargeError where a call would take more bytes than synthesis::memory_limit; `name` is
/// that of the argument, `got` its size, such as "3000 qubits". Below 16 MB it asks nothing.
void check_memory(const char* name, const std::string& got, double bytes);

/// The text of the error of check_memory.
std::string too_large(const std::string& name, const std::string& got, double bytes);

}  // namespace zelt::braidwerk::internal
