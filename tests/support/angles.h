#pragma once

#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "zeltbraidwerk/foundations/gate.h"

/// \file
/// Values of symbolic angles.

namespace support {

using Values = std::map<std::string, double>;

/// Of an expression in prefix notation, from its next operand on. Throws std::out_of_range for a
/// name without a value.
inline double next_value(std::istringstream& in, const Values& values) {
  std::string token;
  in >> token;
  if (token == "+") {
    const double first = next_value(in, values);
    return first + next_value(in, values);
  }
  if (token == "UMINUS") return -next_value(in, values);
  char* end = nullptr;
  const double number = std::strtod(token.c_str(), &end);
  if (!token.empty() && *end == '\0') return number;
  return *end == '*' && end != token.c_str() ? number * values.at(end + 1) : values.at(token);
}

inline double value_of(const structures::Parameter& angle, const Values& values) {
  if (!angle.is_abstract) return angle.value;
  std::istringstream in(angle.expression);
  return next_value(in, values);
}

/// The circuit with values in the place of symbols.
inline std::vector<structures::Gate> with_values(std::vector<structures::Gate> circuit,
                                                 const Values& values) {
  for (structures::Gate& gate : circuit) {
    if (!gate.params.empty()) gate.params[0] = value_of(gate.params[0], values);
  }
  return circuit;
}

}  // namespace support
